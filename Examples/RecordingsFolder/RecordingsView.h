#pragma once

#include <QTreeView>

namespace RecordingsFolder {

/// The list of the recordings, which says why it is empty when it is.
class RecordingsView : public QTreeView
{
    Q_OBJECT

public:
    explicit RecordingsView(QWidget* parent = nullptr);

    /// The size of the thumbnails that it has room for.
    static QSize ThumbnailSize() { return {80, 45}; }

    /// Shown in the middle while there is nothing to list; also read to those who cannot see it.
    void SetEmptyText(const QString& text);

    /// The selected recordings, in the order in which they are shown.
    QStringList SelectedPaths() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString emptyText;
};

} // namespace RecordingsFolder
