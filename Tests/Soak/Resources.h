#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Soak {

/// Samples of this process's memory and number of open files.
class Resources
{
public:
    void Sample();
    /// An error if something still grew in the last third of the run; else empty.
    std::string Error() const;
    std::string Summary() const;

private:
    struct Reading
    {
        std::size_t memoryKilobytes;
        std::size_t openFiles;
    };

    /// The largest of each in one third of the run.
    Reading Peak(std::size_t third) const;

    std::vector<Reading> readings;
};

} // namespace Soak
