#pragma once
// The seam's real operating-system services: the event loop's clock,
// QPrinterInfo with libcups for the default destination, QProcess and the
// desktop's URL handler. The dialogs of the seam are widgets and live with
// the user interface (ui/widgets/RealServices.h), which adds them.
#include "platform/Services.h"
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

}  // namespace jk::platform
