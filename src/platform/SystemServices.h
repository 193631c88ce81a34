#pragma once
// The seam's real operating-system services: the event loop's clock,
// QPrinterInfo with libcups for the default destination, QProcess and the
// desktop's URL handler. The dialogs of the seam are widgets and live with
// the user interface (ui/widgets/RealServices.h), which adds them.
#include "platform/Services.h"
#include <QString>
#include <memory>

namespace jk::platform {

class SystemServices {
public:
    SystemServices();
    ~SystemServices();
    SystemServices(const SystemServices&) = delete;
    SystemServices& operator=(const SystemServices&) = delete;

    // Fills the clock, printers, programs and desktop of s with pointers
    // into this object (valid for its lifetime); the rest stays as it is.
    void fill(Services& s) const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

// Whether a CUPS queue takes jobs now; when not, the reason its server
// gives (or a plain one). An unknown queue takes none.
struct QueueState {
    bool accepting = false;
    QString reason;
};
QueueState queueState(const QString& printer);

// Whether this user has a job titled `title` on `printer` created at or
// after `since` (seconds since the epoch), whatever its state: Qt hands a
// finished document to CUPS without saying whether CUPS took it.
bool jobSubmitted(const QString& printer, const QString& title, qint64 since);

}  // namespace jk::platform
