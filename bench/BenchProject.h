#pragma once
// The full benchmark project, built in code: 100 free text blocks, 50
// text-page blocks, 50 pictures (empty files), 50 character fields and 50
// numeric fields on five sheets.
#include "model/Project.h"
#include <QDir>
#include <QFile>

namespace jkbench {

inline constexpr jk::i16 kSheets[] = {jk::FmtSimple, jk::FmtDouble, jk::FmtInside, jk::FmtCdRom, jk::FmtJacket};

inline jk::TextStyle style(int i)
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
inline jk::ProjectData fullProject(const QDir& dir)
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

}  // namespace jkbench
