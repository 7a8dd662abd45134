// Creates an output folder, or tells the user why it cannot be used: ./prepare FOLDER

#include "Lib/Util/FS/DirectoryUtils.h"

#include <QApplication>

#include <iostream>

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    const QString folder = application.arguments().value(1);
    // Pass a window instead of nullptr, and the alert stays above it.
    if (!Zendra::LW::PrepareFolder(folder, nullptr)) {
        // The alert has told the user why, and is closed.
        std::cout << "choose another folder" << std::endl;
        return 1;
    }
    std::cout << "ready    " << qPrintable(folder) << std::endl;
    return 0;
}
