#pragma once
// What the editing windows share besides the document: the selection, the
// page the page commands act on, and the object clipboard. The main window
// owns one and hands it to its sheet windows.
#include "model/Clipboard.h"
#include "model/Selection.h"

namespace jk {

struct EditorState {
    Selection selection;
    int pageRequest = 1;       // 1 the picture page, 2 the text page
    bool blockOnPage = false;  // text-block commands act on the text page's blocks
    Clipboard clipboard;
};

}  // namespace jk
