#include "Tests/Support/LogCapture.h"

namespace Tests {

LogCapture::LogCapture()
{
    google::AddLogSink(this);
}

LogCapture::~LogCapture()
{
    google::RemoveLogSink(this);
}

void LogCapture::send(google::LogSeverity severity, const char* fullFilename, const char* /*baseFilename*/,
                      int /*line*/, const struct ::tm* /*time*/, const char* message, size_t length)
{
    messages.push_back({severity, fullFilename, std::string(message, length)});
}

} // namespace Tests
