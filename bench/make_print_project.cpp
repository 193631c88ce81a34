// Writes the print benchmark's project into a folder and prints its path:
// booklet, inlay and disc label, 20 text blocks, 5 pictures of 1600x1200
// and a numeric field.
#include "output/PrintProjects.h"
#include <QCoreApplication>
#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        fprintf(stderr, "usage: make_print_project DIR\n");
        return 1;
    }
    QDir().mkpath(QString::fromLocal8Bit(argv[1]));
    printf("%s\n", qPrintable(printfixture::writeFullProject(QDir(QString::fromLocal8Bit(argv[1])))));
    return 0;
}
