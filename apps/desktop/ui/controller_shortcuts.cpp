#include "ui/controller_shortcuts.h"

#include "control/controller_operations.h"
#include "control/operation_source.h"
#include "control/shortcut_table.h"
#include "playlist/playlist_enums.h"
#include "shell/log_categories.h"
#include "ui/playlist_panel.h"
#include "ui/program_panel.h"

#include <QAction>
#include <QApplication>
#include <QHash>
#include <QKeySequenceEdit>
#include <QMenu>
#include <QPointer>
#include <QShortcut>
#include <QWidget>

#include <functional>

namespace tarnix {

namespace {

using Ops = ControllerOperations;
using shortcuts::shortcutDefinitions;

struct FixedCommand {
    const char *name;
    const char *key;  // empty: read by the volume input, not a shortcut
};
constexpr FixedCommand kFixedCommands[] = {
    {"SelectPreviousItem", "Up"},       {"SelectNextItem", "Down"},
    {"RemoveSelectedItem", "Del"},      {"OpenSettings", "Ctrl+Alt+S"},
    {"IncreaseItemVolume", ""},         {"DecreaseItemVolume", ""},
    {"IncreaseMasterVolume", ""},       {"DecreaseMasterVolume", ""},
};

} // namespace

struct ControllerShortcuts::Impl {
    QPointer<QWidget> mainWindow;
    QPointer<PlaylistPanel> playlistPanel;
    QPointer<ProgramPanel> programPanel;
    QPointer<ControllerOperations> operations;
    QHash<QString, std::function<bool()>> commands;
    QStringList names;
    QHash<QString, QList<QKeySequence>> keys;
    QList<std::pair<QString, QPointer<QAction>>> actionShortcuts;
    QList<std::pair<QString, QPointer<QShortcut>>> windowShortcuts;
    bool enabled = true;

    bool run(int action, QList<QVariant> arguments = {})
    {
        return operations && operations->invoke(Ops::Action(action), arguments).status == Ops::Invoked;
    }
    void addCommand(const QString &name, int action, QList<QVariant> arguments = {})
    {
        names.append(name);
        commands.insert(name, [this, action, arguments] { return run(action, arguments); });
    }
    void buildCommands();
    QAction *menuActionFor(int id, const QString &name) const;
    void attach();
    void setKeysEnabled(bool on);
};

void ControllerShortcuts::Impl::buildCommands()
{
    static const std::pair<const char *, int> kPlain[] = {
        {"AddFile", Ops::AddFilesDialog},
        {"Exit", Ops::Exit},
        {"TakeOnAir", Ops::TakeSelectedOnAir},
        {"ToggleOnAirPlayback", Ops::ProgramTogglePlayback},
        {"LoadEdit", Ops::EditLoadSelected},
        {"CopyItemState", Ops::CopySelectedState},
        {"PasteItemState", Ops::PasteSelectedState},
        {"DocumentNext", Ops::DocumentNext},
        {"DocumentPrevious", Ops::DocumentPrevious},
        {"ToggleFtb", Ops::ToggleFtb},
        {"ToggleDsk", Ops::ToggleDsk},
        {"OffAir", Ops::OffAir},
        {"MasterFadeIn", Ops::MasterFadeIn},
        {"MasterFadeOut", Ops::MasterFadeOut},
        {"ItemFadeIn", Ops::ItemFadeIn},
        {"ItemFadeOut", Ops::ItemFadeOut},
        {"BgmFadeIn", Ops::BgmFadeInConfigured},
        {"BgmFadeOut", Ops::BgmFadeOutConfigured},
        {"EditToggleStartMode", Ops::EditToggleStartMode},
        {"EditToggleFadeOut", Ops::EditToggleFadeOut},
        {"EditReset", Ops::EditReset},
        {"EditSetIn", Ops::EditSetIn},
        {"EditSetOut", Ops::EditSetOut},
        {"NextOutputDisplay", Ops::NextOutputDisplay},
        {"PreviewCapture", Ops::PreviewCapture},
        {"ProgramCapture", Ops::ProgramCapture},
        {"TogglePfl", Ops::TogglePfl},
        {"OperatorTimerStart", Ops::OperatorTimerStart},
        {"OperatorTimerPause", Ops::OperatorTimerPause},
        {"OperatorTimerReset", Ops::OperatorTimerReset},
        {"OperatorTimerSettings", Ops::OperatorTimerSettings},
        {"OpenNominalEq", Ops::OpenNominalEq},
        {"OpenItemEq", Ops::OpenItemEq},
        {"OpenMasterEq", Ops::OpenMasterEq},
    };
    static const std::pair<const char *, PlaylistBulkOperation> kBulk[] = {
        {"PlaylistPlayOnce", PlaylistBulkOperation::PlayOnce},   {"PlaylistRepeatAll", PlaylistBulkOperation::RepeatAll},
        {"PlaylistShuffle", PlaylistBulkOperation::Shuffle},     {"PlaylistBgmMode", PlaylistBulkOperation::BgmMode},
        {"PlaylistStandardMode", PlaylistBulkOperation::StandardMode},
        {"PlaylistClear", PlaylistBulkOperation::Clear},         {"PlaylistUndo", PlaylistBulkOperation::Undo},
        {"PlaylistDelete", PlaylistBulkOperation::Delete},
    };
    static const std::pair<const char *, PlaylistEndMode> kEditEnd[] = {
        {"EditEndStop", PlaylistEndMode::stop},
        {"EditEndPause", PlaylistEndMode::pause},
        {"EditEndRepeat", PlaylistEndMode::repeat},
        {"EditEndNext", PlaylistEndMode::next},
    };
    for (const shortcuts::ShortcutDefinition &definition : shortcutDefinitions()) {
        const QString &name = definition.name;
        bool found = false;
        for (const auto &[plain, action] : kPlain) {
            if (name == QLatin1String(plain)) {
                addCommand(name, action);
                found = true;
            }
        }
        for (const auto &[bulk, operation] : kBulk) {
            if (name == QLatin1String(bulk)) {
                addCommand(name, Ops::PlaylistBulk, {QVariant::fromValue(operation)});
                found = true;
            }
        }
        for (const auto &[edit, mode] : kEditEnd) {
            if (name == QLatin1String(edit)) {
                addCommand(name, Ops::EditEndMode, {QVariant::fromValue(mode)});
                found = true;
            }
        }
        if (!found && name.startsWith(QLatin1String("SelectItem"))) {
            addCommand(name, Ops::SelectItemNumber, {QVariant::fromValue(name.mid(10).toInt())});
            found = true;
        }
        if (!found && name.startsWith(QLatin1String("ActivatePlaylist"))) {
            addCommand(name, Ops::ActivatePlaylist, {QVariant::fromValue(name.mid(16).toInt())});
            found = true;
        }
        Q_ASSERT(found);
    }
    addCommand(QStringLiteral("SelectPreviousItem"), Ops::SelectRelativeItem, {QVariant::fromValue(-1)});
    addCommand(QStringLiteral("SelectNextItem"), Ops::SelectRelativeItem, {QVariant::fromValue(1)});
    addCommand(QStringLiteral("RemoveSelectedItem"), Ops::RemoveSelectedItem);
    addCommand(QStringLiteral("OpenSettings"), Ops::OpenSettings);
    addCommand(QStringLiteral("IncreaseItemVolume"), Ops::AdjustItemVolume, {QVariant::fromValue(10)});
    addCommand(QStringLiteral("DecreaseItemVolume"), Ops::AdjustItemVolume, {QVariant::fromValue(-10)});
    addCommand(QStringLiteral("IncreaseMasterVolume"), Ops::AdjustMasterVolume, {QVariant::fromValue(10)});
    addCommand(QStringLiteral("DecreaseMasterVolume"), Ops::AdjustMasterVolume, {QVariant::fromValue(-10)});
}

// The menu entry that stands for a shortcut, found by its object name (or,
// for the bulk operations, by its data among the playlist menu's entries).
QAction *ControllerShortcuts::Impl::menuActionFor(int id, const QString &name) const
{
    if (!mainWindow)
        return nullptr;
    QString objectName;
    if (name == QLatin1String("CopyItemState"))
        objectName = QStringLiteral("playlistMenuCopyStateAction");
    else if (name == QLatin1String("PasteItemState"))
        objectName = QStringLiteral("playlistMenuPasteStateAction");
    else if (name == QLatin1String("OperatorTimerSettings"))
        objectName = QStringLiteral("operatorTimerSettingsAction");
    else if (id >= 43 && id <= 51)
        objectName = QStringLiteral("editMenu") + name;
    else
        objectName = QStringLiteral("onAirMenu") + name;
    const QList<QAction *> actions = mainWindow->findChildren<QAction *>();
    for (QAction *action : actions) {
        if (action->objectName() == objectName)
            return action;
    }
    if (name.startsWith(QLatin1String("Playlist")) && playlistPanel && playlistPanel->playlistMenu()) {
        static const QHash<QString, int> kBulkData{
            {QStringLiteral("PlaylistPlayOnce"), 0}, {QStringLiteral("PlaylistRepeatAll"), 1},
            {QStringLiteral("PlaylistShuffle"), 2},  {QStringLiteral("PlaylistBgmMode"), 3},
            {QStringLiteral("PlaylistStandardMode"), 4}, {QStringLiteral("PlaylistClear"), 5},
            {QStringLiteral("PlaylistUndo"), 6},     {QStringLiteral("PlaylistDelete"), 7},
        };
        const auto data = kBulkData.constFind(name);
        if (data != kBulkData.cend()) {
            for (QAction *action : playlistPanel->playlistMenu()->findChildren<QAction *>()) {
                if (action->property("playlistBulkOperation").isValid() && action->data().toInt() == *data)
                    return action;
            }
        }
    }
    return nullptr;
}

void ControllerShortcuts::Impl::attach()
{
    for (auto &[name, shortcut] : windowShortcuts)
        delete shortcut.data();
    windowShortcuts.clear();
    for (auto &[name, action] : actionShortcuts) {
        if (action)
            action->setShortcuts({});
    }
    actionShortcuts.clear();
    if (!mainWindow)
        return;

    const QList<shortcuts::ShortcutDefinition> &table = shortcutDefinitions();
    auto makeShortcut = [this](const QString &name, const QList<QKeySequence> &sequences) {
        auto *shortcut = new QShortcut(mainWindow);
        shortcut->setKeys(sequences);
        shortcut->setContext(Qt::WindowShortcut);
        shortcut->setAutoRepeat(false);
        shortcut->setEnabled(enabled);
        QObject::connect(shortcut, &QShortcut::activated, shortcut, [this, name] {
            const OperationSourceScope source("Shortcut");
            const auto command = commands.constFind(name);
            if (command != commands.cend())
                (*command)();
        });
        windowShortcuts.append({name, shortcut});
    };
    for (int id = 0; id < table.size(); ++id) {
        const QString &name = table.at(id).name;
        const QList<QKeySequence> sequences = keys.value(name);
        if (QAction *action = menuActionFor(id, name)) {
            // The entry shows the keys; the window-wide shortcut runs them.
            action->setShortcuts(sequences);
            action->setShortcutContext(Qt::WidgetShortcut);
            action->setAutoRepeat(false);
            actionShortcuts.append({name, action});
        }
        if (!sequences.isEmpty())
            makeShortcut(name, sequences);
    }
    for (const FixedCommand &fixed : kFixedCommands) {
        if (fixed.key[0] != '\0')
            makeShortcut(QString::fromLatin1(fixed.name),
                         {QKeySequence::fromString(QString::fromLatin1(fixed.key), QKeySequence::PortableText)});
    }
    for (QAction *action : mainWindow->findChildren<QAction *>()) {
        if (action->objectName() == QLatin1String("settingsAction")) {
            action->setShortcut(QKeySequence::fromString(QStringLiteral("Ctrl+Alt+S"), QKeySequence::PortableText));
            action->setShortcutContext(Qt::WidgetShortcut);
        }
    }
    if (playlistPanel)
        playlistPanel->setShortcutHints(shortcuts::nativeText(keys.value(QStringLiteral("TakeOnAir"))),
                                        shortcuts::nativeText(keys.value(QStringLiteral("LoadEdit"))));
    if (programPanel)
        programPanel->setPlayPauseKeys(shortcuts::nativeText(keys.value(QStringLiteral("ToggleOnAirPlayback"))));
}

void ControllerShortcuts::Impl::setKeysEnabled(bool on)
{
    if (on == enabled)
        return;
    enabled = on;
    for (auto &[name, shortcut] : windowShortcuts) {
        if (shortcut)
            shortcut->setEnabled(on);
    }
}

ControllerShortcuts::ControllerShortcuts(QWidget *mainWindow, PlaylistPanel *playlistPanel,
                                         ProgramPanel *programPanel, ControllerOperations *operations,
                                         const QJsonObject &stored, QObject *parent)
    : QObject(parent), d(std::make_unique<Impl>())
{
    d->mainWindow = mainWindow;
    d->playlistPanel = playlistPanel;
    d->programPanel = programPanel;
    d->operations = operations;
    d->buildCommands();
    if (!stored.isEmpty() && !shortcuts::validateBindings(stored).isEmpty())
        qCWarning(lcControl).noquote() << "Stored shortcut bindings are invalid; the default keys apply.";
    d->keys = shortcuts::effectiveBindings(stored);
    d->attach();
    // Typing into a text field keeps the show's keys away.
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget *, QWidget *now) { d->setKeysEnabled(!acceptsText(now)); });
    d->setKeysEnabled(!acceptsText(QApplication::focusWidget()));
}

ControllerShortcuts::~ControllerShortcuts()
{
    for (auto &[name, shortcut] : d->windowShortcuts)
        delete shortcut.data();
}

bool ControllerShortcuts::acceptsText(const QWidget *widget)
{
    if (!widget)
        return false;
    return widget->testAttribute(Qt::WA_InputMethodEnabled) || widget->inputMethodQuery(Qt::ImEnabled).toBool();
}

bool ControllerShortcuts::trigger(const QString &name)
{
    const auto command = d->commands.constFind(name);
    return command != d->commands.cend() && (*command)();
}

QStringList ControllerShortcuts::commandNames() const
{
    return d->names;
}

QString ControllerShortcuts::applyBindings(const QJsonObject &bindings)
{
    const QString offence = shortcuts::validateBindings(bindings);
    if (!offence.isEmpty())
        return offence;
    d->keys = shortcuts::effectiveBindings(bindings);
    d->attach();
    return {};
}

QList<QKeySequence> ControllerShortcuts::keysOf(const QString &name) const
{
    return d->keys.value(name);
}

bool ControllerShortcuts::keysEnabled() const
{
    return d->enabled;
}

} // namespace tarnix
