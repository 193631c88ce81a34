#pragma once
// Small rules shared by several windows.
#include <QString>

namespace jk {

// True when any installed printer has a name.
bool printerAvailable();

// The nudge-step rule of the step box: a value outside 1-999 (or no number)
// gives 10 and asks for the notice.
struct StepResult {
    int step;
    bool notice;
};
StepResult stepRule(const QString& boxText);

}  // namespace jk
