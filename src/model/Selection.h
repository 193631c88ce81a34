#pragma once
// What the user selected on the sheets and how the step buttons act on it.
// One per main window; the sheet windows share it.
#include "model/ObjectRef.h"

namespace jk {

struct Selection {
    // The object pressed last (index 0: none yet). A new object takes its
    // slot number; its kind stays the one pressed last.
    ObjectRef object;
    bool marked = false;      // it shows the selection mark
    bool moveMode = false;    // the step buttons move it
    bool resizeMode = false;  // the step buttons resize it
    int nudgeStep = 40;       // twips a step
    bool pictureNudge = false;  // the object pressed last is a picture
};

}  // namespace jk
