#include "ui/sheet/Actions.h"
#include <QAction>
#include <QMenu>
#include <QToolButton>

int Actions::apply(const jk::sheet::CommandTable& t) const
{
    // A name is an action when there is one (menus register theirs too),
    // else a tool button.
    for (const auto& [name, on] : t.enable) {
        if (QAction* a = action(name)) a->setEnabled(on);
        else if (QToolButton* b = button(name)) b->setEnabled(on);
        else if (QWidget* w = widgets_.value(name)) w->setEnabled(on);
    }
    for (const auto& [name, on] : t.visible) {
        if (QAction* a = action(name)) a->setVisible(on);
        else if (QToolButton* b = button(name)) b->setVisible(on);
        else if (QWidget* w = widgets_.value(name)) w->setVisible(on);
    }
    return t.pageRequest;
}

bool Actions::isEnabled(const QString& name) const
{
    if (QAction* a = action(name)) return a->isEnabled();
    if (QToolButton* b = button(name)) return b->isEnabled();
    return false;
}
