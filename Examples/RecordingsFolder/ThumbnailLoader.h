#pragma once

#include <QImage>
#include <QObject>
#include <QSize>
#include <QThreadPool>

#include <atomic>

namespace RecordingsFolder {

/// Makes thumbnails of picture files on threads of its own.
///
/// Use it from the thread it lives in, which also gets its signals.
class ThumbnailLoader : public QObject
{
    Q_OBJECT

public:
    /// @param devicePixelRatio  pixels of the screen for each of the size's
    ThumbnailLoader(const QSize& thumbnailSize, double devicePixelRatio, QObject* parent = nullptr);
    /// Waits for the thumbnails that are being made; those not yet begun are dropped.
    ~ThumbnailLoader() override;

    /// Asks for a thumbnail; Loaded() brings it. For a file that is no picture it brings an empty frame.
    void Load(const QString& path);
    /// Drops what was asked for and has not come; no Loaded() comes for it any more.
    void DropAll();
    bool IsIdle() const { return done == wanted; }

Q_SIGNALS:
    void Loaded(const QString& path, const QImage& thumbnail);
    /// So many of the thumbnails wanted are done; both start again from 0 when all are.
    void Progressed(int done, int wanted);

private:
    void OnMade(int round, const QString& path, const QImage& thumbnail);

    const QSize size;
    const double pixelRatio;
    /// Counts the calls of DropAll(): a thumbnail of an earlier round is not made, and not passed on if it
    /// was.
    std::atomic<int> currentRound{0};
    int done = 0;
    int wanted = 0;
    QThreadPool threads;
};

} // namespace RecordingsFolder
