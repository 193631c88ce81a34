#pragma once
// What the shared procedures need from the windows, without knowing widgets.
#include <QString>
#include <vector>

namespace jk {

// A sheet window as the shared procedures see it.
class ISheet {
public:
    virtual ~ISheet() = default;
    virtual int formatCode() const = 0;
    // Both spine panels receive this text.
    virtual void setSpineCaption(const QString& text) = 0;
};

// The main window as the shared procedures see it.
class IShell {
public:
    virtual ~IShell() = default;
    virtual void setPrintCommandsEnabled(bool enabled) = 0;
    // Open sheet windows, first opened first.
    virtual std::vector<ISheet*> sheets() const = 0;
    virtual void refresh() = 0;  // Rafraichir
};

IShell* shell();
void setShell(IShell* s);

}  // namespace jk
