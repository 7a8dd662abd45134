#pragma once

#include <QByteArray>
#include <QDesktopServices>
#include <QList>
#include <QObject>
#include <QUrl>

namespace Tests {

/// Stands in for the desktop while it lives: records the file URLs that are opened.
class Desktop : public QObject
{
    Q_OBJECT

public:
    Desktop() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "Open"); }
    ~Desktop() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    QList<QByteArray> opened;

public Q_SLOTS:
    void Open(const QUrl& url) { opened << url.toEncoded(); }
};

} // namespace Tests
