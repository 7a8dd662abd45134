<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_US">
<context>
    <name>CommandLine</name>
    <message>
        <source>Shows the recordings in a folder, and what happens to them.</source>
        <translation>Zeigt die Aufnahmen in einem Ordner und was mit ihnen geschieht.</translation>
    </message>
    <message>
        <source>folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>The folder to show.</source>
        <translation>Der Ordner, der angezeigt wird.</translation>
    </message>
    <message>
        <source>[folder]</source>
        <translation>[Ordner]</translation>
    </message>
    <message>
        <source>Only one folder can be given.</source>
        <translation>Es kann nur ein Ordner angegeben werden.</translation>
    </message>
</context>
<context>
    <name>DirectoryUtilsValidPath</name>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
</context>
<context>
    <name>PathValidation</name>
    <message>
        <source>No folder is given</source>
        <translation>Es ist kein Ordner angegeben</translation>
    </message>
    <message>
        <source>The folder does not exist</source>
        <translation>Der Ordner existiert nicht</translation>
    </message>
    <message>
        <source>This is not a folder</source>
        <translation>Das ist kein Ordner</translation>
    </message>
    <message>
        <source>The folder cannot be read</source>
        <translation>Der Ordner kann nicht gelesen werden</translation>
    </message>
    <message>
        <source>The folder cannot be written to</source>
        <translation>In den Ordner kann nicht geschrieben werden</translation>
    </message>
    <message>
        <source>The disk is full</source>
        <translation>Der Datenträger ist voll</translation>
    </message>
</context>
<context>
    <name>RecordingsFolder::RecordingWriter</name>
    <message>
        <source>%1 could not be written: %2</source>
        <translation>%1 konnte nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>The number of the next recording could not be determined: %1</source>
        <translation>Die Nummer der nächsten Aufnahme ließ sich nicht ermitteln: %1</translation>
    </message>
    <message>
        <source>%1 could not be created: %2</source>
        <translation>%1 konnte nicht angelegt werden: %2</translation>
    </message>
    <message>
        <source>Other programs have taken every number that was tried.</source>
        <translation>Andere Programme haben alle versuchten Nummern bereits vergeben.</translation>
    </message>
</context>
<context>
    <name>RecordingsFolder::RecordingsModel</name>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Modified</source>
        <translation>Geändert</translation>
    </message>
</context>
<context>
    <name>RecordingsFolder::RecordingsWindow</name>
    <message>
        <source>Recordings</source>
        <translation>Aufnahmen</translation>
    </message>
    <message>
        <source>%1 - Recordings</source>
        <translation>%1 – Aufnahmen</translation>
    </message>
    <message>
        <source>Link %1 -&gt; %2</source>
        <translation>Link %1 -&gt; %2</translation>
    </message>
    <message>
        <source>&amp;Browse…</source>
        <translation>Du&amp;rchsuchen…</translation>
    </message>
    <message>
        <source>Choose the folder to show</source>
        <translation>Den Ordner wählen, der angezeigt wird</translation>
    </message>
    <message>
        <source>&amp;Capture</source>
        <translation>&amp;Aufnehmen</translation>
    </message>
    <message>
        <source>Save a picture of this window as the next recording</source>
        <translation>Ein Bild dieses Fensters als nächste Aufnahme speichern</translation>
    </message>
    <message>
        <source>R&amp;eveal</source>
        <translation>An&amp;zeigen</translation>
    </message>
    <message>
        <source>Show the selected recordings in the file browser</source>
        <translation>Die ausgewählten Aufnahmen im Dateimanager anzeigen</translation>
    </message>
    <message>
        <source>Ctrl+R</source>
        <translation>Ctrl+R</translation>
    </message>
    <message>
        <source>Move to Tra&amp;sh</source>
        <translation>In den &amp;Papierkorb</translation>
    </message>
    <message>
        <source>Move the selected recordings to the trash</source>
        <translation>Die ausgewählten Aufnahmen in den Papierkorb verschieben</translation>
    </message>
    <message>
        <source>De&amp;lete…</source>
        <translation>&amp;Löschen…</translation>
    </message>
    <message>
        <source>Shift+Del</source>
        <translation>Shift+Del</translation>
    </message>
    <message>
        <source>Ctrl+L</source>
        <translation>Ctrl+L</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>Close the window</source>
        <translation>Das Fenster schließen</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Recording</source>
        <translation>A&amp;ufnahme</translation>
    </message>
    <message>
        <source>Recordi&amp;ngs:</source>
        <translation>Auf&amp;nahmen:</translation>
    </message>
    <message>
        <source>Signals</source>
        <translation>Signale</translation>
    </message>
    <message>
        <source>Si&amp;gnals:</source>
        <translation>Si&amp;gnale:</translation>
    </message>
    <message>
        <source>Thumbnails: %v of %m</source>
        <translation>Vorschaubilder: %v von %m</translation>
    </message>
    <message>
        <source>Thumbnails</source>
        <translation>Vorschaubilder</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <translation>%1, %2</translation>
    </message>
    <message>
        <source>1 recording</source>
        <translation>1 Aufnahme</translation>
    </message>
    <message numerus="yes">
        <source>%n recordings</source>
        <translation>
            <numerusform>%n Aufnahme</numerusform>
            <numerusform>%n Aufnahmen</numerusform>
        </translation>
    </message>
    <message>
        <source>Choose a folder to see its recordings here.</source>
        <translation>Wählen Sie einen Ordner, um seine Aufnahmen hier zu sehen.</translation>
    </message>
    <message>
        <source>The file browser could not show:</source>
        <translation>Der Dateimanager konnte Folgendes nicht anzeigen:</translation>
    </message>
    <message>
        <source>Could not move to the trash:</source>
        <translation>Konnte nicht in den Papierkorb verschoben werden:</translation>
    </message>
    <message>
        <source>Delete %1? This cannot be undone.</source>
        <translation>%1 löschen? Das lässt sich nicht rückgängig machen.</translation>
    </message>
    <message numerus="yes">
        <source>Delete these %n recordings? This cannot be undone.</source>
        <translation>
            <numerusform>Diese %n Aufnahme löschen? Das lässt sich nicht rückgängig machen.</numerusform>
            <numerusform>Diese %n Aufnahmen löschen? Das lässt sich nicht rückgängig machen.</numerusform>
        </translation>
    </message>
    <message>
        <source>Could not delete:</source>
        <translation>Konnte nicht gelöscht werden:</translation>
    </message>
    <message>
        <source>Could not create a link to:</source>
        <translation>Konnte keinen Link anlegen auf:</translation>
    </message>
    <message>
        <source>Temporary Link</source>
        <translation>Temporärer Link</translation>
    </message>
    <message>
        <source>The link to %1 is:
%2
It will be removed when this window is closed. Open it now?</source>
        <translation>Der Link auf %1 ist:
%2
Er wird gelöscht, wenn dieses Fenster geschlossen wird. Jetzt öffnen?</translation>
    </message>
    <message>
        <source>Permanently delete the selected recordings</source>
        <translation>Die ausgewählten Aufnahmen endgültig löschen</translation>
    </message>
    <message>
        <source>Create Lin&amp;k…</source>
        <translation>Lin&amp;k anlegen…</translation>
    </message>
    <message>
        <source>Create a temporary link to the selected recording</source>
        <translation>Einen temporären Link auf die ausgewählte Aufnahme anlegen</translation>
    </message>
    <message>
        <source>Choose a Folder of Recordings</source>
        <translation>Ordner mit Aufnahmen wählen</translation>
    </message>
    <message>
        <source>This folder does not exist yet. Capture (%1) creates it.</source>
        <translation>Diesen Ordner gibt es noch nicht. „Aufnehmen“ (%1) legt ihn an.</translation>
    </message>
    <message>
        <source>This folder is empty. Capture (%1) creates the first recording.</source>
        <translation>Dieser Ordner ist leer. „Aufnehmen“ (%1) legt die erste Aufnahme an.</translation>
    </message>
    <message>
        <source>No file here matches the filter %1. Capture (%2) creates a recording.</source>
        <translation>Keine Datei in diesem Ordner passt zum Filter %1. „Aufnehmen“ (%2) legt eine Aufnahme an.</translation>
    </message>
</context>
<context>
    <name>RecordingsFolder::WatchSettingsForm</name>
    <message>
        <source>No folder selected</source>
        <translation>Kein Ordner ausgewählt</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>Alle Dateien</translation>
    </message>
    <message>
        <source>Wildcards for file names, separated by semicolons: *.mp4; *.png</source>
        <translation>Platzhalter für Dateinamen, durch Semikolons getrennt: *.mp4; *.png</translation>
    </message>
    <message>
        <source>Number of subfolder levels to include</source>
        <translation>Anzahl der Unterordner-Ebenen, die einbezogen werden</translation>
    </message>
    <message>
        <source>System notifications</source>
        <translation>Systemmeldungen</translation>
    </message>
    <message>
        <source>Polling</source>
        <translation>Regelmäßige Abfrage</translation>
    </message>
    <message>
        <source>Polling also detects replaced files, changes in network folders, and a folder that is created later</source>
        <translation>Die regelmäßige Abfrage erkennt auch ersetzte Dateien, Änderungen in Netzwerkordnern und einen Ordner, der erst später angelegt wird</translation>
    </message>
    <message>
        <source> ms</source>
        <translation> ms</translation>
    </message>
    <message>
        <source>Time between two polls</source>
        <translation>Zeit zwischen zwei Abfragen</translation>
    </message>
    <message>
        <source>F&amp;older:</source>
        <translation>&amp;Ordner:</translation>
    </message>
    <message>
        <source>Fil&amp;ter:</source>
        <translation>&amp;Filter:</translation>
    </message>
    <message>
        <source>&amp;Depth:</source>
        <translation>&amp;Tiefe:</translation>
    </message>
    <message>
        <source>&amp;Watch by:</source>
        <translation>Beoba&amp;chten durch:</translation>
    </message>
    <message>
        <source>Inter&amp;val:</source>
        <translation>Inter&amp;vall:</translation>
    </message>
</context>
</TS>
