#pragma once
// What the tests share: a clean application context holding the texts the
// tests look for, small files written on the fly, and ink found in images.
// Widget-free: the model, file and render tests include it too.
#include "model/AppContext.h"
#include <QByteArray>
#include <QColor>
#include <QFile>
#include <QImage>
#include <QRect>
#include <functional>

namespace fixture {

// A fresh application context with the captions and messages the windows
// put on screen, so tests can find them by text.
inline void resetApp()
{
    jk::resetApp();
    jk::Texts& t = jk::appSetup().texts;
    t.formatNames = {"Simple", "Double", "Paper jacket", "CD ROM", "Inside"};
    t.fitCaptions = {"Strech to fit", "Actual size"};
    t.spineCaptions = {"Hide Spines", "Show Spines"};
    t.messages[std::size_t(jk::Msg::ProgramTitle)] = "Jewelcase Studio";
}

inline bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

// A file's bytes; empty when it cannot be read.
inline QByteArray readFile(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Images of sheets at 96 dpi: one pixel is 15 twips.
inline QPoint px(QPoint twips) { return {twips.x() / 15, twips.y() / 15}; }
inline bool isWhite(const QColor& c) { return c.red() > 240 && c.green() > 240 && c.blue() > 240; }

// Pixels inside a rectangle of twips that are not white (or that pass the
// test given).
inline int inkIn(const QImage& img, const QRect& twips, const std::function<bool(const QColor&)>& test = {})
{
    const QRect area(px(twips.topLeft()), px(twips.bottomRight()));
    int n = 0;
    for (int y = std::max(0, area.top()); y <= std::min(img.height() - 1, area.bottom()); ++y)
        for (int x = std::max(0, area.left()); x <= std::min(img.width() - 1, area.right()); ++x)
            if (test ? test(img.pixelColor(x, y)) : !isWhite(img.pixelColor(x, y))) ++n;
    return n;
}

}  // namespace fixture
