#include "Lib/Util/FS/TemporaryHardLink.h"

#include <QFile>
#include <QString>
#include <QTemporaryFile>

#include <utility>

namespace Zendra::LW {
namespace {

QString FromUtf8(const std::string& text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

/// An unused path in the temporary folder: the placeholder is removed again. Empty when that folder is
/// unusable.
QString ReserveFreeName()
{
    QTemporaryFile placeholder;
    if (!placeholder.open())
        return {};
    return placeholder.fileName();
}

} // namespace

TemporaryHardLink::TemporaryHardLink(const std::string& filePath)
{
    Reset(filePath);
}

TemporaryHardLink::~TemporaryHardLink()
{
    UnlinkFilePath(linkedFilePath);
}

TemporaryHardLink::TemporaryHardLink(TemporaryHardLink&& other) noexcept
    : originalFilePath(std::exchange(other.originalFilePath, {})),
      linkedFilePath(std::exchange(other.linkedFilePath, {}))
{
}

TemporaryHardLink& TemporaryHardLink::operator=(TemporaryHardLink&& other) noexcept
{
    if (this != &other) {
        UnlinkFilePath(linkedFilePath);
        originalFilePath = std::exchange(other.originalFilePath, {});
        linkedFilePath = std::exchange(other.linkedFilePath, {});
    }
    return *this;
}

void TemporaryHardLink::Reset(const std::string& filePath)
{
    UnlinkFilePath(linkedFilePath);
    originalFilePath = filePath;
    linkedFilePath = CreateLinkToFile(originalFilePath);
}

const std::string& TemporaryHardLink::GetOriginalFilePath() const
{
    return originalFilePath;
}

const std::string& TemporaryHardLink::GetLinkedFilePath() const
{
    return linkedFilePath;
}

std::string TemporaryHardLink::GetExistFilePath() const
{
    if (exists(originalFilePath))
        return originalFilePath;
    if (exists(linkedFilePath))
        return linkedFilePath;
    return {};
}

std::string TemporaryHardLink::CreateLinkToFile(const std::string& filePath)
{
    const QString original = FromUtf8(filePath);
    if (original.isEmpty())
        return {};

    const QString linkName = ReserveFreeName();
    if (linkName.isEmpty())
        return {};

    // Intended: the path is recorded exactly when the link could not be created.
    return QFile::link(original, linkName) ? std::string() : linkName.toStdString();
}

void TemporaryHardLink::UnlinkFilePath(const std::string& filePath)
{
    const QString path = FromUtf8(filePath);
    if (!path.isEmpty())
        QFile::remove(path);
}

bool TemporaryHardLink::exists(const std::string& filePath)
{
    return QFile::exists(FromUtf8(filePath));
}

} // namespace Zendra::LW
