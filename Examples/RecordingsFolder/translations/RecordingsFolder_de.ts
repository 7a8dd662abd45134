<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_US">
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
        <translation>Den Ordner gibt es nicht</translation>
    </message>
    <message>
        <source>This is not a folder</source>
        <translation>Das ist kein Ordner</translation>
    </message>
    <message>
        <source>The folder cannot be read</source>
        <translation>Der Ordner ist nicht lesbar</translation>
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
    <name>RecordingsFolder::CommandLine</name>
    <message>
        <source>Play a typical recording, one step after the other.</source>
        <translation>Eine typische Aufnahme vorspielen, Schritt für Schritt.</translation>
    </message>
    <message>
        <source>Save a picture of the window at the end of the tour.</source>
        <translation>Am Ende der Vorführung ein Bild des Fensters sichern.</translation>
    </message>
    <message>
        <source>file.png</source>
        <translation>Datei.png</translation>
    </message>
    <message>
        <source>Light text on dark ground.</source>
        <translation>Helle Schrift auf dunklem Grund.</translation>
    </message>
    <message>
        <source>The time that a step of the tour may take.</source>
        <translation>Die Zeit, die ein Schritt der Vorführung dauern darf.</translation>
    </message>
    <message>
        <source>milliseconds</source>
        <translation>Millisekunden</translation>
    </message>
    <message>
        <source>Shows the recordings in a folder and follows what happens to them.</source>
        <translation>Zeigt die Aufnahmen in einem Ordner und verfolgt, was mit ihnen geschieht.</translation>
    </message>
    <message>
        <source>folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>The folder; the tour makes one of its own when none is named.</source>
        <translation>Der Ordner; die Vorführung legt sich einen an, wenn keiner genannt ist.</translation>
    </message>
    <message>
        <source>[folder]</source>
        <translation>[Ordner]</translation>
    </message>
    <message>
        <source>--limit takes a number of milliseconds.</source>
        <translation>--limit erwartet eine Anzahl von Millisekunden.</translation>
    </message>
    <message>
        <source>There is room for one folder only.</source>
        <translation>Es kann nur einen Ordner geben.</translation>
    </message>
    <message>
        <source>--screenshot goes with --tour.</source>
        <translation>--screenshot gehört zu --tour.</translation>
    </message>
</context>
<context>
    <name>RecordingsFolder::RecordingWriter</name>
    <message>
        <source>No number was found for the recording: %1</source>
        <translation>Für die Aufnahme fand sich keine Nummer: %1</translation>
    </message>
    <message>
        <source>%1 could not be made: %2</source>
        <translation>%1 konnte nicht angelegt werden: %2</translation>
    </message>
    <message>
        <source>%1 could not be written: %2</source>
        <translation>%1 konnte nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>Others took every number that was tried.</source>
        <translation>Jede versuchte Nummer haben andere genommen.</translation>
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
        <source>Changed</source>
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
        <source>No file browser could show:</source>
        <translation>Kein Dateimanager konnte dies anzeigen:</translation>
    </message>
    <message>
        <source>Could not be moved to the trash:</source>
        <translation>Konnte nicht in den Papierkorb verschoben werden:</translation>
    </message>
    <message>
        <source>Delete %1? There is no way to bring it back.</source>
        <translation>%1 löschen? Das lässt sich nicht rückgängig machen.</translation>
    </message>
    <message numerus="yes">
        <source>Delete these %n recordings? There is no way to bring them back.</source>
        <translation>
            <numerusform>Diese %n Aufnahme löschen? Das lässt sich nicht rückgängig machen.</numerusform>
            <numerusform>Diese %n Aufnahmen löschen? Das lässt sich nicht rückgängig machen.</numerusform>
        </translation>
    </message>
    <message>
        <source>Could not be deleted:</source>
        <translation>Konnte nicht gelöscht werden:</translation>
    </message>
    <message>
        <source>No link could be made to:</source>
        <translation>Es konnte kein Link angelegt werden auf:</translation>
    </message>
    <message>
        <source>Link %1 -&gt; %2</source>
        <translation>Link %1 -&gt; %2</translation>
    </message>
    <message>
        <source>A link</source>
        <translation>Ein Link</translation>
    </message>
    <message>
        <source>The link to %1 is
%2
and stays until this window is closed. Open it?</source>
        <translation>Der Link auf %1 ist
%2
und bleibt, bis dieses Fenster geschlossen wird. Öffnen?</translation>
    </message>
    <message>
        <source>&amp;Browse…</source>
        <translation>Du&amp;rchsuchen…</translation>
    </message>
    <message>
        <source>Choose the folder to show</source>
        <translation>Den Ordner wählen, der gezeigt wird</translation>
    </message>
    <message>
        <source>&amp;Capture</source>
        <translation>&amp;Aufnehmen</translation>
    </message>
    <message>
        <source>Save a picture of this window as the next recording</source>
        <translation>Ein Bild dieses Fensters als nächste Aufnahme sichern</translation>
    </message>
    <message>
        <source>R&amp;eveal</source>
        <translation>An&amp;zeigen</translation>
    </message>
    <message>
        <source>Show the selected recordings in the file browser</source>
        <translation>Die ausgewählten Aufnahmen im Dateimanager zeigen</translation>
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
        <source>Delete the selected recordings for good</source>
        <translation>Die ausgewählten Aufnahmen endgültig löschen</translation>
    </message>
    <message>
        <source>Shift+Del</source>
        <translation>Shift+Del</translation>
    </message>
    <message>
        <source>Open a Lin&amp;k…</source>
        <translation>Lin&amp;k öffnen…</translation>
    </message>
    <message>
        <source>Link the selected recording under a temporary name</source>
        <translation>Die ausgewählte Aufnahme unter einem vorläufigen Namen verlinken</translation>
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
        <source>No folder is chosen</source>
        <translation>Kein Ordner ist gewählt</translation>
    </message>
    <message>
        <source>every file</source>
        <translation>jede Datei</translation>
    </message>
    <message>
        <source>Wildcards for file names, parted by semicolons: *.png; *.jpg</source>
        <translation>Muster für Dateinamen, durch Strichpunkte getrennt: *.png; *.jpg</translation>
    </message>
    <message>
        <source>Levels of folders below this one to look into</source>
        <translation>Wie viele Ebenen von Unterordnern durchsucht werden</translation>
    </message>
    <message>
        <source>Notices of the system</source>
        <translation>Meldungen des Systems</translation>
    </message>
    <message>
        <source>Polling</source>
        <translation>Nachsehen</translation>
    </message>
    <message>
        <source>Polling also sees replaced files, network folders and a folder that is made later</source>
        <translation>Nachsehen bemerkt auch ersetzte Dateien, Netzordner und einen Ordner, der später angelegt wird</translation>
    </message>
    <message>
        <source> ms</source>
        <translation> ms</translation>
    </message>
    <message>
        <source>The time between two looks while polling</source>
        <translation>Die Zeit zwischen zweimal Nachsehen</translation>
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
        <source>E&amp;very:</source>
        <translation>All&amp;e:</translation>
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
        <source>The folder of the recordings</source>
        <translation>Der Ordner der Aufnahmen</translation>
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
        <source>This folder does not exist yet. Capture (%1) makes it.</source>
        <translation>Diesen Ordner gibt es noch nicht. Aufnehmen (%1) legt ihn an.</translation>
    </message>
    <message>
        <source>This folder is empty. Capture (%1) makes the first recording.</source>
        <translation>Dieser Ordner ist leer. Aufnehmen (%1) macht die erste Aufnahme.</translation>
    </message>
    <message>
        <source>No file here matches the filter %1. Capture (%2) makes a recording.</source>
        <translation>Keine Datei passt hier zum Filter %1. Aufnehmen (%2) macht eine Aufnahme.</translation>
    </message>
</context>
<context>
    <name>RecordingsFolder::StepRunner</name>
    <message>
        <source>no message came up</source>
        <translation>es erschien keine Meldung</translation>
    </message>
    <message>
        <source>FAILED in step %1, %2: %3</source>
        <translation>FEHLSCHLAG in Schritt %1, %2: %3</translation>
    </message>
    <message>
        <source>%1 did not come within %2 ms</source>
        <translation>%1 kam nicht innerhalb von %2 ms</translation>
    </message>
    <message>
        <source>%1 after %2 ms</source>
        <translation>%1 nach %2 ms</translation>
    </message>
    <message>
        <source>a message came up: %1</source>
        <translation>es erschien eine Meldung: %1</translation>
    </message>
</context>
<context>
    <name>RecordingsFolder::Tour</name>
    <message>
        <source>by notices</source>
        <translation>durch Meldungen</translation>
    </message>
    <message>
        <source>Every signal came. The recordings are in %1</source>
        <translation>Jedes Signal kam. Die Aufnahmen liegen in %1</translation>
    </message>
    <message>
        <source>open something that is no folder</source>
        <translation>etwas öffnen, das kein Ordner ist</translation>
    </message>
    <message>
        <source>open a folder that is missing</source>
        <translation>einen Ordner öffnen, den es nicht gibt</translation>
    </message>
    <message>
        <source>open the folder</source>
        <translation>den Ordner öffnen</translation>
    </message>
    <message>
        <source>prepare it, which makes it</source>
        <translation>ihn vorbereiten, wodurch er entsteht</translation>
    </message>
    <message>
        <source>prepare it</source>
        <translation>ihn vorbereiten</translation>
    </message>
    <message>
        <source>watch again, for what came into an empty folder</source>
        <translation>neu beobachten, was in einen leeren Ordner kam</translation>
    </message>
    <message>
        <source>By another program</source>
        <translation>Von einem anderen Programm</translation>
    </message>
    <message>
        <source>another program adds a file, seen %1</source>
        <translation>ein anderes Programm legt eine Datei an, bemerkt %1</translation>
    </message>
    <message>
        <source>it changes the file, seen %1</source>
        <translation>es ändert die Datei, bemerkt %1</translation>
    </message>
    <message>
        <source>it deletes the file, seen %1</source>
        <translation>es löscht die Datei, bemerkt %1</translation>
    </message>
    <message>
        <source>switch to polling</source>
        <translation>auf Nachsehen umschalten</translation>
    </message>
    <message>
        <source>by polling</source>
        <translation>durch Nachsehen</translation>
    </message>
    <message>
        <source>switch back to notices</source>
        <translation>zurück auf Meldungen schalten</translation>
    </message>
    <message>
        <source>move it to the trash</source>
        <translation>sie in den Papierkorb verschieben</translation>
    </message>
    <message>
        <source>delete it for good</source>
        <translation>sie endgültig löschen</translation>
    </message>
    <message>
        <source>link it under a temporary name</source>
        <translation>sie unter einem vorläufigen Namen verlinken</translation>
    </message>
    <message>
        <source>there is no link to %1</source>
        <translation>es gibt keinen Link auf %1</translation>
    </message>
    <message>
        <source>save a screenshot</source>
        <translation>ein Bildschirmfoto sichern</translation>
    </message>
    <message>
        <source>the thumbnails were not ready in time</source>
        <translation>die Vorschaubilder waren nicht rechtzeitig fertig</translation>
    </message>
    <message>
        <source>%1 could not be written</source>
        <translation>%1 konnte nicht geschrieben werden</translation>
    </message>
    <message>
        <source>stop</source>
        <translation>anhalten</translation>
    </message>
    <message>
        <source>capture</source>
        <translation>aufnehmen</translation>
    </message>
    <message>
        <source>%1 did not end in time</source>
        <translation>%1 endete nicht rechtzeitig</translation>
    </message>
    <message>
        <source>%1 could not %2 %3</source>
        <translation>%1 konnte dies nicht: %2 %3</translation>
    </message>
</context>
</TS>
