#pragma once
// The main window's commands: menu entries, pop-up menus and tool buttons,
// made once by the main window and registered here under their historical
// object names, which the command tables, the message file and the help use.
// Sheet windows keep the commands in step through this object rather than
// by searching the widget tree.
#include "render/SheetLayout.h"
#include <QHash>
#include <QString>

class QAction;
class QMenu;
class QToolButton;
class QWidget;

class Actions {
public:
    QAction* action(const QString& name) const { return actions_.value(name); }
    QMenu* popup(const QString& name) const { return popups_.value(name); }
    QToolButton* button(const QString& name) const { return buttons_.value(name); }
    const QHash<QString, QAction*>& allActions() const { return actions_; }

    void add(const QString& name, QAction* a) { actions_.insert(name, a); }
    void add(const QString& name, QMenu* m) { popups_.insert(name, m); }
    void add(const QString& name, QToolButton* b) { buttons_.insert(name, b); }
    // Other named controls the tables switch (the tool bar).
    void addWidget(const QString& name, QWidget* w) { widgets_.insert(name, w); }

    // Enables, disables, shows and hides the named commands (the menu entry
    // and the tool button of that name alike). Returns the table's page
    // request (0: none).
    int apply(const jk::sheet::CommandTable& t) const;
    // A command's enabled state: the menu entry's, else the button's.
    bool isEnabled(const QString& name) const;

private:
    QHash<QString, QAction*> actions_;
    QHash<QString, QMenu*> popups_;
    QHash<QString, QToolButton*> buttons_;
    QHash<QString, QWidget*> widgets_;
};
