#include "Lib/Util/FS/DirectoryUtils.h"

#include <QApplication>

#include <iostream>

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    const QString folder = application.arguments().value(1);
    // With a window to belong to, the alert would stay above it.
    if (!Zendra::LW::PrepareFolder(folder, nullptr)) {
        // The user knows why by now, and has closed the alert.
        std::cout << "choose another folder" << std::endl;
        return 1;
    }
    std::cout << "ready    " << qPrintable(folder) << std::endl;
    return 0;
}
