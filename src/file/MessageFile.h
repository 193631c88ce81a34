#pragma once
// The message file Default.msg: a list of items, one per line or separated by
// commas, an item holding a comma enclosed in double quotes.
#include "model/AppContext.h"
#include <QByteArray>
#include <QStringList>

namespace jk {

// The entries every message file has; new features append theirs after them.
constexpr int kMessageFileEntries = 183;

// Reads at most maxItems list items. Blanks around an unquoted item are
// dropped; an empty line is an empty item. Undecodable bytes never fail.
QStringList readListItems(const QByteArray& data, int maxItems);

// Decodes a text file: UTF-8 when valid, else Windows-1252.
QString decodeText(const QByteArray& data);

// Fills the text tables from the entries in file order; missing entries
// leave their texts empty, except the appended messages, which keep their
// built-in English. Format names 5-9 are derived.
Texts textsFromEntries(const QStringList& entries);

// Reads the file (at most a few megabytes of it); a missing or unreadable
// file gives empty texts.
Texts loadMessageFile(const QString& path);

// Caption of a menu entry by its control name, empty for unknown names.
QString menuCaption(const Texts& t, const QString& control);
// The control names that take the 55 menu captions, in file order (shared
// captions list the first name only).
const QStringList& menuCaptionOrder();
// A caption used as a dialog title: no accelerator, no trailing dots.
QString plainCaption(QString caption);

}  // namespace jk
