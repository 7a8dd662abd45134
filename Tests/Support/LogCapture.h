#pragma once

#include <glog/logging.h>

#include <string>
#include <vector>

namespace Tests {

/// Collects what is logged through glog while it lives.
class LogCapture : private google::LogSink
{
public:
    struct Message
    {
        google::LogSeverity severity;
        std::string file; ///< the source's path as it was given to the compiler
        std::string text;
    };

    LogCapture();
    ~LogCapture() override;
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    const std::vector<Message>& Messages() const { return messages; }

private:
    void send(google::LogSeverity severity, const char* fullFilename, const char* baseFilename, int line,
              const struct ::tm* time, const char* message, size_t length) override;

    std::vector<Message> messages;
};

} // namespace Tests
