#pragma once
// The program's own object clipboard: one slot per kind of object, each a
// copy of that kind's record without its owning sheet. The system clipboard
// is not used. The main window keeps it as long as the program runs; it is
// not saved with the project. Widget-free: the sheet window copies into it and pastes from it,
// and the rules can be checked without a window.
#include "model/Project.h"
#include "model/Selection.h"

namespace jk {

enum class ClipKind : i16 { None, TextBlock, Picture, CharField, NumField };

struct Clipboard {
    TextRecord text;            // free text block or text-page block
    PictureRecord picture;
    CharFieldRecord charField;
    NumFieldRecord numField;
    // The kind copied last. A paste makes an object of this kind, whatever
    // is selected at the time: the user gets back what was copied.
    ClipKind last = ClipKind::None;

    void clear() { *this = Clipboard{}; }
};

// The clipboard kind of an object kind.
ClipKind clipKindOf(ObjKind kind);

// Copies the record of object `index` of that kind into its slot and makes
// it the kind a paste gives. Text blocks come from the text-page table when
// `page`. False, with the clipboard unchanged, when the object is not there:
// an index outside the table, a deleted record or another sheet's record.
bool clipCopy(Clipboard& clip, const Project& project, int sheetCode, ClipKind kind, int index, bool page);

struct PasteResult {
    enum Status { Pasted, Empty, Full } status = Empty;
    ClipKind kind = ClipKind::None;
    bool page = false;  // a text block that went to the text page
    int index = 0;      // the new object's slot (Pasted)
    int capacity = 0;   // the table's size (Full)
};

// Creates an object of the kind copied last on the sheet of that format
// code, in the next slot of its table (count + 1; slots are never reused);
// a text block goes to the text-page table when `toPage`. The copied
// position is kept, except that a left at or past `sheetWidth` (twips)
// puts the object against the sheet's right edge. A full table is left
// as it is (Full); so is everything when nothing was copied (Empty).
PasteResult clipPaste(const Clipboard& clip, Project& project, int sheetCode, bool toPage, int sheetWidth);

// The left a pasted object gets: its own, or against the right edge when
// it would start off the sheet (never left of the sheet's own left edge).
i16 pasteLeft(int left, int width, int sheetWidth);

}  // namespace jk
