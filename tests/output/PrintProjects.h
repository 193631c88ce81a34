#pragma once
// Projects for the printing tests and the print benchmark, written as real
// .prj files, and the poppler readers the printing tests check PDFs with.
#include "file/ProjectFile.h"
#include "model/Project.h"
#include <QColor>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QProcess>

namespace printfixture {

inline jk::TextStyle textStyle(int left, int top, int width = 3000, int height = 400, int size = 12)
{
    jk::TextStyle s;
    s.fontName = QStringLiteral("Arial");
    s.fontSize = jk::i16(size);
    s.top = jk::i16(top);
    s.left = jk::i16(left);
    s.width = jk::i16(width);
    s.height = jk::i16(height);
    return s;
}

inline jk::ProjectData emptyProject(int sheets)
{
    jk::ProjectData g;
    g.createTables(jk::TableSizing::NewProject);
    g.sheetComposition = jk::i16(sheets);
    return g;
}

// A booklet with a two-digit number at 7 and, when given, a character field
// stepping through a value file.
inline jk::ProjectData numberedBooklet(const QString& valueFile = {}, int sheets = jk::FmtDouble)
{
    jk::ProjectData g = emptyProject(sheets);
    g.numFields.append({jk::FmtDouble, 2, 7, false, textStyle(300, 5000, 1200, 400)});
    if (!valueFile.isEmpty()) g.charFields.append({jk::FmtDouble, valueFile, {}, textStyle(300, 3000)});
    return g;
}

// A picture file of that size with some detail (so it does not compress to nothing).
inline QString writePicture(const QDir& dir, int i, QSize size = {1600, 1200})
{
    QImage img(size, QImage::Format_RGB32);
    for (int y = 0; y < img.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(img.scanLine(y));
        for (int x = 0; x < img.width(); ++x)
            line[x] = qRgb((x * 255 / img.width() + i * 40) & 255, (y * 255 / img.height()) & 255, ((x ^ y) + i * 13) & 255);
    }
    QPainter p(&img);
    p.setPen(QPen(Qt::black, 20));
    p.drawEllipse(img.rect().adjusted(100, 100, -100, -100));
    p.end();
    const QString path = dir.filePath(QStringLiteral("picture%1.jpg").arg(i));
    img.save(path, "JPG", 90);
    return path;
}

// Booklet, inlay and disc label: 20 text blocks, 5 pictures of 1600x1200,
// a two-digit numeric field at 7 on the booklet.
inline QString writeFullProject(const QDir& dir)
{
    jk::ProjectData g = numberedBooklet({}, jk::FmtDouble + jk::FmtInside + jk::FmtCdRom);
    g.spineText = QStringLiteral("The complete collection");
    const jk::i16 sheets[] = {jk::FmtDouble, jk::FmtInside, jk::FmtCdRom};
    for (int i = 0; i < 20; ++i)
        g.freeText.append({sheets[i % 3], QStringLiteral("Text block %1").arg(i + 1),
                           textStyle(400 + 150 * (i / 3), 1200 + 250 * (i / 3), 3000, 300, 10)});
    for (int i = 0; i < 5; ++i)
        g.pictures.append({sheets[i % 3], writePicture(dir, i), jk::i16(2000 + 300 * i), jk::i16(300 + 200 * i), 2400, 1800, 1});
    for (int i = 0; i < 4; ++i)
        g.pageText.append({jk::FmtDouble, QStringLiteral("%1. Track title\r\n").arg(i + 1), textStyle(300, 300 + 400 * i)});
    const QString path = dir.filePath(QStringLiteral("full.prj"));
    jk::writeProject(g, path);
    return path;
}

// Writes the project with its (only) numeric field starting at `start`:
// the writer stores every field at 1, as the program opens them.
inline bool writeNumbered(const jk::ProjectData& g, const QString& path, int start)
{
    QByteArray bytes = jk::projectFileBytes(g);
    const qsizetype at = bytes.lastIndexOf("\r\n1\r\n");
    if (at < 0) return false;
    bytes.replace(at, 5, "\r\n" + QByteArray::number(start) + "\r\n");
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

inline QString tool(const QString& program, const QStringList& args)
{
    QProcess p;
    p.start(program, args);
    p.waitForFinished(30000);
    return QString::fromUtf8(p.readAllStandardOutput());
}

inline QString pageText(const QString& pdf, int page)
{
    const QString n = QString::number(page);
    return tool("pdftotext", {"-f", n, "-l", n, pdf, "-"}).simplified();
}

// Page `page` at 600 dpi in grey.
inline QImage raster(const QString& pdf, int page, const QString& stem)
{
    const QString n = QString::number(page);
    tool("pdftoppm", {"-r", "600", "-gray", "-png", "-singlefile", "-f", n, "-l", n, pdf, stem});
    return QImage(stem + ".png");
}
inline double pxToMm(double px) { return px * 25.4 / 600; }
inline int mmToPx(double mm) { return int(mm / 25.4 * 600); }

// Outer edges in mm of the ink along a row (or a column) at `atMm`, between
// two positions in mm; {-1/600 in, ...} when there is none.
inline std::pair<double, double> ink(const QImage& img, bool row, double atMm, double fromMm, double toMm)
{
    const int at = mmToPx(atMm), end = std::min(row ? img.width() : img.height(), mmToPx(toMm));
    int first = -1, last = -1;
    for (int i = std::max(0, mmToPx(fromMm)); i < end; ++i)
        if (qGray(row ? img.pixel(i, at) : img.pixel(at, i)) < 128) {
            if (first < 0) first = i;
            last = i;
        }
    return {pxToMm(first), pxToMm(last + 1)};
}

}  // namespace printfixture
