#include "ui/settings_shortcuts_page.h"

#include "control/shortcut_table.h"
#include "shell/localized_text.h"
#include "shell/settings_editor.h"
#include "ui/ui_text.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QJsonArray>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace tarnix {

namespace {

const QString kBindingsKey = QStringLiteral("shortcuts/bindings");
// A shortcut's label is its catalogue key's last part.
const QString kLabelKey = QStringLiteral("settings.shortcuts.%1");

// "SelectItem3" is told as "settings.shortcuts.SelectItem" with 3.
QString shortcutLabel(const QString &name)
{
    for (const char *numbered : {"SelectItem", "ActivatePlaylist"}) {
        const QLatin1String stem(numbered);
        if (name.startsWith(stem) && name.size() == stem.size() + 1)
            return LocalizedText(kLabelKey.arg(stem), {name.mid(stem.size())}, name).toString();
    }
    return LocalizedText(kLabelKey.arg(name), {}, name).toString();
}

} // namespace

SettingsShortcutsPage::SettingsShortcutsPage(SettingsEditor *editor, QWidget *parent)
    : QWidget(parent), m_editor(editor)
{
    setObjectName(QStringLiteral("settingsShortcutsPage"));
    auto *layout = new QVBoxLayout(this);
    const QList<shortcuts::ShortcutDefinition> &table = shortcuts::shortcutDefinitions();
    m_table = new QTableWidget(int(table.size()), 3, this);
    m_table->setObjectName(QStringLiteral("settingsShortcutsTable"));
    m_table->verticalHeader()->hide();
    m_table->setSelectionMode(QAbstractItemView::NoSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_table->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Interactive);
    m_table->horizontalHeader()->setSectionResizeMode(2, QHeaderView::Interactive);
    m_table->setColumnWidth(1, 170);
    m_table->setColumnWidth(2, 170);
    for (int row = 0; row < table.size(); ++row) {
        auto *label = new QTableWidgetItem;
        label->setData(Qt::UserRole, table.at(row).name);
        m_table->setItem(row, 0, label);
        for (int column = 1; column <= 2; ++column) {
            auto *edit = new QKeySequenceEdit(m_table);
            edit->setObjectName(QStringLiteral("shortcutKey%1_%2").arg(table.at(row).name).arg(column));
            edit->setClearButtonEnabled(true);
            m_table->setCellWidget(row, column, edit);
        }
    }
    layout->addWidget(m_table, 1);
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("settingsShortcutsStatus"));
    m_status->setWordWrap(true);
    layout->addWidget(m_status);
    auto *buttons = new QHBoxLayout;
    m_defaults = new QPushButton(this);
    m_defaults->setObjectName(QStringLiteral("settingsShortcutsDefaultsButton"));
    m_save = new QPushButton(this);
    m_save->setObjectName(QStringLiteral("settingsShortcutsSaveButton"));
    buttons->addWidget(m_defaults);
    buttons->addStretch(1);
    buttons->addWidget(m_save);
    layout->addLayout(buttons);

    connect(m_defaults, &QPushButton::clicked, this, &SettingsShortcutsPage::loadDefaults);
    connect(m_save, &QPushButton::clicked, this, &SettingsShortcutsPage::save);
    if (editor) {
        connect(editor, &SettingsEditor::loaded, this, [this](const QJsonObject &values) {
            showBindings(values.value(kBindingsKey).toObject());
            setStatus(QString());
        });
        connect(editor, &SettingsEditor::changed, this, [this](const QString &key) {
            if (key == kBindingsKey)
                setStatus(ui::text("settings.shortcuts.saved", "Shortcuts saved and applied."));
        });
        connect(editor, &SettingsEditor::refused, this, [this](const QString &key, const QString &reason) {
            if (key == kBindingsKey)
                setStatus(ui::text("settings.shortcuts.invalid", "Duplicate, reserved or invalid key. Not saved: %1",
                                   {reason}));
        });
        connect(editor, &SettingsEditor::saveFailed, this,
                [this](const QString &key, const QJsonValue &, const QString &reason) {
                    if (key == kBindingsKey)
                        setStatus(ui::text("settings.window.save_failed", "Could not save the setting: %1", {reason}));
                });
    }
    retranslate();
}

QJsonObject SettingsShortcutsPage::tableBindings() const
{
    QJsonObject bindings;
    for (int row = 0; row < m_table->rowCount(); ++row) {
        QJsonArray keys;
        for (int column = 1; column <= 2; ++column) {
            const auto *edit = static_cast<QKeySequenceEdit *>(m_table->cellWidget(row, column));
            const QKeySequence sequence = edit->keySequence();
            if (!sequence.isEmpty())
                keys.append(sequence.toString(QKeySequence::PortableText));
        }
        bindings.insert(m_table->item(row, 0)->data(Qt::UserRole).toString(), keys);
    }
    return bindings;
}

void SettingsShortcutsPage::showBindings(const QJsonObject &stored)
{
    const QHash<QString, QList<QKeySequence>> keys = shortcuts::effectiveBindings(stored);
    for (int row = 0; row < m_table->rowCount(); ++row) {
        const QList<QKeySequence> sequences = keys.value(m_table->item(row, 0)->data(Qt::UserRole).toString());
        for (int column = 1; column <= 2; ++column) {
            auto *edit = static_cast<QKeySequenceEdit *>(m_table->cellWidget(row, column));
            edit->setKeySequence(column - 1 < sequences.size() ? sequences.at(column - 1) : QKeySequence());
        }
    }
}

void SettingsShortcutsPage::loadDefaults()
{
    showBindings(QJsonObject());
    setStatus(ui::text("settings.shortcuts.defaults_loaded", "Defaults loaded. Save to apply."));
}

void SettingsShortcutsPage::save()
{
    const QJsonObject bindings = tableBindings();
    // Judged here first so that the answer is immediate; the editor judges
    // it again by the same rules before it writes.
    const QString offence = shortcuts::validateBindings(bindings);
    if (!offence.isEmpty()) {
        setStatus(ui::text("settings.shortcuts.invalid", "Duplicate, reserved or invalid key. Not saved: %1", {offence}));
        return;
    }
    if (m_editor)
        m_editor->change(kBindingsKey, bindings);
}

QString SettingsShortcutsPage::status() const
{
    return m_status->text();
}

void SettingsShortcutsPage::setStatus(const QString &text)
{
    m_status->setText(text);
}

void SettingsShortcutsPage::retranslate()
{
    m_table->setHorizontalHeaderLabels({ui::text("settings.shortcuts.action", "Action"),
                                        ui::text("settings.shortcuts.key1", "Key 1"),
                                        ui::text("settings.shortcuts.key2", "Key 2")});
    for (int row = 0; row < m_table->rowCount(); ++row) {
        QTableWidgetItem *label = m_table->item(row, 0);
        label->setText(shortcutLabel(label->data(Qt::UserRole).toString()));
    }
    m_save->setText(ui::text("settings.shortcuts.save", "Save"));
    m_defaults->setText(ui::text("settings.shortcuts.defaults", "Load Defaults"));
}

} // namespace tarnix
