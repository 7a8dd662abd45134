// Creates the next numbered recording in a folder and prints its path: ./number [FOLDER]

#include "Lib/Util/FS/DirectoryUtils.h"

#include <QFile>

#include <exception>
#include <iostream>
#include <regex>
#include <stdexcept>
#include <string>

/// Creates the next recording's file. It never opens one that another program has created.
std::string CreateNextRecording(const std::string& folder)
{
    // No leading zeros: "08" is not a valid octal number, and one such name would make every call throw.
    const std::regex pattern("Recording ([1-9]\\d*)\\.mp4");
    while (true) {
        const std::string number = Zendra::LW::GetNextAvaliableIndex(folder, pattern);
        std::string path = folder + "/Recording ";
        path += number + ".mp4";
        QFile file(QString::fromStdString(path));
        if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            return path;
        // Try again if another program took the number meanwhile, but not after any other error.
        if (!file.exists())
            throw std::runtime_error(file.errorString().toStdString());
    }
}

int main(int argc, char* argv[])
{
    try {
        std::cout << CreateNextRecording(argc > 1 ? argv[1] : ".") << std::endl;
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "No recording can be made: " << error.what() << std::endl;
        return 1;
    }
}
