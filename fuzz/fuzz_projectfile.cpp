// libFuzzer target for the project file reader. Besides "no crash, no hang,
// no leak", it checks two properties on every input:
//  - whatever state a read leaves, the writer's bytes read back without a
//    single error;
//  - writing, reading and writing again gives the same bytes (unless a field
//    is linked to the spine, whose rule adds a blank to the spine text on
//    every open).
// And a reader never shows more than its capped number of messages.
#include "file/ProjectFile.h"
#include <QBuffer>
#include <cstdio>
#include <cstdlib>

namespace {

struct Read {
    jk::ProjectReadResult result;
    int reported = 0;
    QString first;
};

Read readAll(const QByteArray& bytes, jk::ProjectData& data)
{
    QByteArray copy = bytes;
    QBuffer buf(&copy);
    buf.open(QIODevice::ReadOnly);
    Read r;
    r.result = jk::readProjectData(buf, data, QStringLiteral("fuzz.prj"), QString(),
                                   [&r](const QString& text, const QString&) {
                                       if (r.reported++ == 0) r.first = text;
                                   });
    return r;
}

bool spineLinked(const jk::ProjectData& data)
{
    const auto& t = data.numFields;
    for (int i = 1; i <= t.count(); ++i)
        if (t.at(i).spineLink == 1 && !t.at(i).isFree()) return true;
    return false;
}

[[noreturn]] void fail(const char* what, const QString& detail)
{
    std::fprintf(stderr, "fuzz_projectfile: %s\n%s\n", what, qPrintable(detail));
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace jk;
    const QByteArray input(reinterpret_cast<const char*>(data), qsizetype(size));

    ProjectData one;
    const Read first = readAll(input, one);
    if (first.reported > kMaxReportedErrors + 1) fail("too many messages", first.first);

    one.sheetComposition = i16(first.result.composition);
    const QByteArray written = projectFileBytes(one);

    ProjectData two;
    const Read second = readAll(written, two);
    if (second.result.errors != 0) fail("the writer's output does not read back cleanly", second.first);

    const bool linked = spineLinked(two);
    two.sheetComposition = i16(second.result.composition);
    const QByteArray again = projectFileBytes(two);
    if (!linked && again != written) fail("a second save differs from the first", QString::fromLatin1(written.toPercentEncoding()));
    return 0;
}
