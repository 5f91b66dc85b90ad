// The general and ON AIR pages: how the window speaks and what the ON AIR
// controls allow.

#include "ui/settings_form.h"
#include "ui/settings_pages.h"


#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QWidget>

namespace tarnix {

namespace {

QWidget *page(const char *objectName)
{
    auto *widget = new QWidget;
    widget->setObjectName(QString::fromLatin1(objectName));
    return widget;
}

} // namespace

QWidget *buildGeneralPage(SettingsForm &form)
{
    QWidget *general = page("settingsGeneralPage");
    QFormLayout *rows = form.addPage(general);
    // The language's own name, as the operator who reads it looks for it.
    form.addChoice(rows, QStringLiteral("ui/language"), "settings.general.language", "Language",
                   {{nullptr, "English", QStringLiteral("en")}, {nullptr, "\u65e5\u672c\u8a9e", QStringLiteral("ja")}},
                   "settingsLanguageCombo");
    form.addChoice(rows, QStringLiteral("appearance/controllerSkin"), "settings.general.skin", "Controller skin",
                   {{nullptr, "Studio Hardware", QStringLiteral("hardware")},
                    {nullptr, "Material Dark", QStringLiteral("material-dark")},
                    {nullptr, "TARNIX Clasic", QStringLiteral("tarnix-clasic")}},
                   "settingsSkinCombo");
    form.addChoice(rows, QStringLiteral("accessibility/textSize"), "settings.general.text_size", "Text size",
                   {{"settings.general.text_size.standard", "Standard", 0},
                    {"settings.general.text_size.large", "Large", 1},
                    {"settings.general.text_size.largest", "Largest", 2}},
                   "settingsTextSizeCombo");
    form.addNameList(rows, QStringLiteral("time/timeZone"), "settings.general.time_zone", "Time zone",
                     "settingsTimeZoneCombo");
    form.addChoice(rows, QStringLiteral("time/remainingTotal"), "settings.general.remaining", "Remaining time",
                   {{"settings.general.remaining.item", "Up to the end of the ON AIR item", false},
                    {"settings.general.remaining.total", "Up to the Map Total arrival point", true}},
                   "settingsRemainingTotalCombo");
    return general;
}

QWidget *buildOnAirPage(SettingsForm &form)
{
    QWidget *onAir = page("settingsOnAirPage");
    QFormLayout *rows = form.addPage(onAir);
    form.addCheck(rows, QStringLiteral("onAir/allowSameItemRetake"), "settings.on_air.retake",
                  "Allow the ON AIR item to be taken again", "settingsRetakeCheckBox");
    form.addCheck(rows, QStringLiteral("playlist/autoSelectNextItemAfterOnAir"), "settings.on_air.auto_select_next",
                  "Select the next item when an item leaves the air", "settingsAutoSelectNextCheckBox");
    form.addCheck(rows, QStringLiteral("onAir/disableFtbButton"), "settings.on_air.lock_ftb", "Lock the FTB button",
                  "settingsLockFtbCheckBox");
    form.addCheck(rows, QStringLiteral("onAir/showPlaybackRateControls"), "settings.on_air.rate_controls",
                  "Show the playback rate controls", "settingsRateControlsCheckBox");
    QLineEdit *colour = form.addText(rows, QStringLiteral("player/backgroundColor"), "settings.on_air.background",
                                     "Background colour (#RRGGBB)", "settingsBackgroundColorEdit");
    colour->setMaxLength(16);
    colour->setMaximumWidth(colour->fontMetrics().horizontalAdvance(QStringLiteral("#DDDDDDDDDD")) + 40);
    return onAir;
}

} // namespace tarnix
