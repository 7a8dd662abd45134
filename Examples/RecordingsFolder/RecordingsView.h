#pragma once

#include <QTreeView>

namespace RecordingsFolder {

/// The list of the recordings. While it is empty, it shows a text that says why.
class RecordingsView : public QTreeView
{
    Q_OBJECT

public:
    explicit RecordingsView(QWidget* parent = nullptr);

    /// The size of the thumbnails in the list.
    static QSize ThumbnailSize() { return {80, 45}; }

    /// Shown in the middle while the list is empty; also the text for screen readers.
    void SetEmptyText(const QString& text);

    /// The selected recordings, in the order of the list.
    QStringList SelectedPaths() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString emptyText;
};

} // namespace RecordingsFolder
