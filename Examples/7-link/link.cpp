// Links a file under a temporary name, and prints what the link object knows of it: ./link FILE

#include "Lib/Util/FS/TemporaryHardLink.h"

#include <filesystem>
#include <iostream>
#include <string>

using Zendra::LW::TemporaryHardLink;

int main(int argc, char* argv[])
{
    if (argc < 2)
        return 1;

    // Absolute: the link is created in another folder, where a relative path would point elsewhere.
    const TemporaryHardLink link(std::filesystem::absolute(argv[1]).string());
    const std::string& recorded = link.GetLinkedFilePath();
    const std::string usable = link.GetExistFilePath();
    std::cout << "recorded " << (recorded.empty() ? "nothing" : recorded) << '\n'
              << "usable   "
              << (usable.empty() ? "nothing" : std::filesystem::path(usable).filename().string())
              << std::endl;
    return 0;
}
