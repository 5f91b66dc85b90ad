#pragma once

#include <QStyle>
#include <QVariant>
#include <QWidget>

namespace tarnix::ui {

// A dynamic property the skins select on; the style sees a change only
// after a repolish, which is done only when the value really changes.
inline void setStyleProperty(QWidget *widget, const char *name, const QVariant &value)
{
    if (widget->property(name) == value)
        return;
    widget->setProperty(name, value);
    widget->style()->unpolish(widget);
    widget->style()->polish(widget);
}

} // namespace tarnix::ui
