// The project file with a full project: 100 free text blocks, 50 text-page
// blocks, 50 pictures, 50 character fields and 50 numeric fields on five
// sheets. Measures the writer (bytes and the atomic save) and the reader.
#include "file/ProjectFile.h"
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

constexpr jk::i16 kSheets[] = {jk::FmtSimple, jk::FmtDouble, jk::FmtInside, jk::FmtCdRom, jk::FmtJacket};

jk::TextStyle style(int i)
{
    jk::TextStyle s;
    s.fontName = i % 2 ? QStringLiteral("Arial") : QStringLiteral("Times New Roman");
    s.fontSize = jk::i16(8 + i % 10);
    s.bold = (i % 3 == 0);
    s.foreColor = i * 4099;
    s.backColor = 16777215;
    s.alignment = jk::i16(i % 3);
    s.top = jk::i16(40 * i);
    s.left = jk::i16(25 * i);
    s.width = 2400;
    s.height = 600;
    return s;
}

// The full project; its files live in dir.
jk::ProjectData fullProject(const QDir& dir)
{
    jk::ProjectData g;
    g.createTables(jk::TableSizing::NewProject);
    g.sheetComposition = 31 - 16;  // Simple, Double, Inside, CD ROM
    g.spineText = QStringLiteral("The complete collection, volume 3");
    g.spineFont.name = QStringLiteral("Arial");
    for (jk::i16 code : kSheets) g.backgrounds[std::size_t(code)] = {QStringLiteral("~%1").arg(code * 1000)};

    const QString values = dir.filePath(QStringLiteral("names.txt"));
    QFile v(values);
    v.open(QIODevice::WriteOnly);
    for (int i = 1; i <= 200; ++i) v.write(QStringLiteral("Name number %1\r\n").arg(i).toUtf8());
    v.close();

    for (int i = 1; i <= 100; ++i)
        g.freeText.append({kSheets[i % 5],
                           QStringLiteral("Free text block %1\r\nSecond line with café\r\nThird line\r\n").arg(i),
                           style(i)});
    for (int i = 1; i <= 50; ++i) {
        g.pageText.append({jk::FmtDouble, QStringLiteral("%1. Track title number %1\r\n").arg(i), style(i)});
        const QString pic = dir.filePath(QStringLiteral("picture%1.png").arg(i));
        QFile p(pic);
        p.open(QIODevice::WriteOnly);
        g.pictures.append({kSheets[i % 5], pic, jk::i16(10 * i), jk::i16(20 * i), 1440, 1440, 1});
        g.charFields.append({kSheets[i % 5], values, QString(), style(i)});
        g.numFields.append({kSheets[i % 5], jk::i16(1 + i % 4), 1, i == 1, style(i)});
    }
    return g;
}

void BM_ProjectFileBytes(benchmark::State& state)
{
    QTemporaryDir dir;
    const jk::ProjectData g = fullProject(QDir(dir.path()));
    qint64 size = 0;
    for (auto _ : state) {
        const QByteArray b = jk::projectFileBytes(g);
        size = b.size();
        benchmark::DoNotOptimize(b.data());
    }
    state.counters["bytes"] = double(size);
}
BENCHMARK(BM_ProjectFileBytes)->Unit(benchmark::kMicrosecond);

void BM_WriteProject(benchmark::State& state)
{
    QTemporaryDir dir;
    const jk::ProjectData g = fullProject(QDir(dir.path()));
    const QString path = dir.filePath(QStringLiteral("full.prj"));
    for (auto _ : state) {
        QString error;
        if (!jk::writeProject(g, path, &error)) state.SkipWithError(qPrintable(error));
    }
}
BENCHMARK(BM_WriteProject)->Unit(benchmark::kMicrosecond);

void BM_ReadProject(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("full.prj"));
    jk::writeProject(fullProject(QDir(dir.path())), path);
    for (auto _ : state) {
        jk::ProjectData d;
        const jk::ProjectReadResult r = jk::readProject(path, d);
        if (r.errors) state.SkipWithError("the project did not read cleanly");
    }
}
BENCHMARK(BM_ReadProject)->Unit(benchmark::kMicrosecond);

// Pictures saved on another machine: every name is looked up beside the project.
void BM_ReadProjectWindowsPaths(benchmark::State& state)
{
    QTemporaryDir dir;
    jk::ProjectData g = fullProject(QDir(dir.path()));
    for (int i = 1; i <= g.pictures.count(); ++i)
        g.pictures.at(i).file = QStringLiteral("C:\\PICS\\PICTURE%1.PNG").arg(i);
    const QString path = dir.filePath(QStringLiteral("full.prj"));
    jk::writeProject(g, path);
    for (auto _ : state) {
        jk::ProjectData d;
        jk::readProject(path, d);
        if (!d.pictures.at(50).file.startsWith(dir.path())) state.SkipWithError("a picture was not found");
    }
}
BENCHMARK(BM_ReadProjectWindowsPaths)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
