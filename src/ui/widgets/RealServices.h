#pragma once
// The seam's real implementations: the operating-system services of the
// platform layer plus the Qt dialogs and the program's own help window.
#include "platform/SystemServices.h"
#include <memory>

class RealServices {
public:
    RealServices();
    ~RealServices();
    RealServices(const RealServices&) = delete;
    RealServices& operator=(const RealServices&) = delete;

    // Pointers into this object: valid for its lifetime.
    jk::platform::Services services() const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

// Installs one process-wide RealServices (made on first call).
void installRealServices();
