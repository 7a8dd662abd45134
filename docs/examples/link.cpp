#include "Lib/Util/FS/TemporaryHardLink.h"

#include <filesystem>
#include <iostream>
#include <string>

using Zendra::LW::TemporaryHardLink;

int main(int argc, char* argv[])
{
    if (argc < 2)
        return 1;

    // The link lies in another folder, where a relative path would lead somewhere else.
    const TemporaryHardLink link(std::filesystem::absolute(argv[1]).string());
    const std::string& recorded = link.GetLinkedFilePath();
    const std::string usable = link.GetExistFilePath();
    std::cout << "recorded " << (recorded.empty() ? "nothing" : recorded) << '\n'
              << "usable   "
              << (usable.empty() ? "nothing" : std::filesystem::path(usable).filename().string())
              << std::endl;
    return 0;
}
