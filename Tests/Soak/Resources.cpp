#include "Tests/Soak/Resources.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

namespace Soak {
namespace {

// How much more the last third of a run may need than the second one.
constexpr std::size_t memorySlackKilobytes = 4096;
constexpr std::size_t openFilesSlack = 2;

// A sanitizer keeps freed memory for a while, so a limit would measure the sanitizer.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isMemoryMeaningful = false;
#else
constexpr bool isMemoryMeaningful = true;
#endif

std::size_t ResidentKilobytes()
{
    std::ifstream file("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    file >> total >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) / 1024;
}

std::size_t OpenFiles()
{
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

} // namespace

void Resources::Sample()
{
    readings.push_back({ResidentKilobytes(), OpenFiles()});
}

Resources::Reading Resources::Peak(std::size_t third) const
{
    Reading peak = {0, 0};
    const std::size_t count = readings.size();
    for (std::size_t i = count * third / 3; i < count * (third + 1) / 3; ++i) {
        peak.memoryKilobytes = std::max(peak.memoryKilobytes, readings[i].memoryKilobytes);
        peak.openFiles = std::max(peak.openFiles, readings[i].openFiles);
    }
    return peak;
}

std::string Resources::Error() const
{
    if (readings.size() < 9)
        return "too few samples of memory and open files";
    const Reading middle = Peak(1);
    const Reading last = Peak(2);
    if (isMemoryMeaningful && last.memoryKilobytes > middle.memoryKilobytes + memorySlackKilobytes)
        return "memory grows: " + Summary();
    if (last.openFiles > middle.openFiles + openFilesSlack)
        return "open files grow: " + Summary();
    return {};
}

std::string Resources::Summary() const
{
    std::string memory;
    std::string files;
    for (std::size_t third = 0; third < 3; ++third) {
        const Reading peak = Peak(third);
        memory += (third == 0 ? "" : ", ") + std::to_string(peak.memoryKilobytes);
        files += (third == 0 ? "" : ", ") + std::to_string(peak.openFiles);
    }
    return "peaks of the thirds: " + memory + " kB of memory; " + files + " open files";
}

} // namespace Soak
