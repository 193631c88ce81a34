#pragma once
// Shared procedures callable from any window.
#include <QString>

namespace jk {

// Keeps the event loop running for two seconds (instantly in tests).
void twoSecondPause();

// Sets the printer-available flag (1 when any installed printer has a name)
// and enables or disables every print command to match. Returns the flag.
int printerAvailabilityRule();

// Help set-up: remembers the owner and points the help file at index.html.
void helpSetUp(qint64 ownerWindow);
void helpShutDown();

// Gives every open sheet's spines the spine text, a blank and the spine
// number text; empty parts become a single blank. Ends with a refresh.
void spinePropagation();

// The nudge-step rule of the step box: a value outside 1-999 (or no number)
// gives 10 and asks for the notice.
struct StepResult {
    int step;
    bool notice;
};
StepResult stepRule(const QString& boxText);

}  // namespace jk
