#pragma once
// Fonts.lst: line 1 the number of printer fonts minus 1, then one name a line.
#include <QString>
#include <QStringList>
#include <functional>

namespace jk {

// True when the cache's first value equals fontCount - 1. A missing, empty or
// unreadable file, or junk in the first line, is not current.
bool fontCacheIsCurrent(const QString& path, int fontCount);

// Rewrites the cache. progress(i) is called after each name is added.
bool writeFontCache(const QString& path, const QStringList& fonts,
                    const std::function<void(int)>& progress = {});

}  // namespace jk
