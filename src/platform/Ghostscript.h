#pragma once
// EPS out: Ghostscript's eps2write turns a sheet's vector PDF into EPS. It
// runs as a separate process with -dSAFER (never through a shell, with
// GS_OPTIONS dropped), and a process running past the time limit is stopped.
#include <QList>
#include <QString>

namespace jk::platform {

struct EpsConversion {
    QString pdf;  // read
    QString eps;  // written by Ghostscript
};

struct GhostscriptResult {
    enum Status { Done, Missing, Failed, TimedOut } status = Failed;
    QString detail;  // what Ghostscript said (its first message line), or why it could not start
};

// Converts every PDF into its EPS, the conversions running side by side.
// Done when all of them wrote their file; the caller removes what a failed
// conversion left. Text becomes outlines: eps2write would turn the
// CID-keyed TrueType fonts that Qt embeds into bitmap fonts, which print
// blurred, so outlines keep the text sharp at every size. Pictures finer
// than pictureDpi are resampled to it (eps2write stores them losslessly:
// at full resolution a sheet's EPS grows tenfold and takes four times as
// long); 0 keeps them as they are.
GhostscriptResult convertPdfToEps(const QList<EpsConversion>& jobs, int pictureDpi, int timeLimitMs = 60000);

}  // namespace jk::platform
