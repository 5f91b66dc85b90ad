#include "ui/settings_form.h"

#include "shell/settings_editor.h"
#include "ui/ui_text.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace tarnix {

SettingsForm::SettingsForm(SettingsEditor *editor, QObject *parent)
    : QObject(parent), m_editor(editor)
{
    if (!editor)
        return;
    connect(editor, &SettingsEditor::loaded, this, [this](const QJsonObject &values) { showValues(values); });
    connect(editor, &SettingsEditor::changed, this, [this](const QString &key, const QJsonValue &value) {
        if (Field *f = field(key)) {
            f->show(value);
            showMessage(key, QString());
        }
    });
    connect(editor, &SettingsEditor::refused, this, [this](const QString &key, const QString &reason) {
        showMessage(key, ui::text("settings.window.refused", "Not saved: %1", {reason}));
    });
    connect(editor, &SettingsEditor::saveFailed, this, [this](const QString &key, const QJsonValue &, const QString &reason) {
        showMessage(key, ui::text("settings.window.save_failed", "Could not save the setting: %1", {reason}));
    });
}

QFormLayout *SettingsForm::addPage(QWidget *page)
{
    auto *column = new QVBoxLayout(page);
    auto *form = new QFormLayout;
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    column->addLayout(form);
    column->addStretch(1);
    return form;
}

QWidget *SettingsForm::row(QFormLayout *form, QWidget *control, const QString &key, const char *textKey,
                           const char *fallback)
{
    auto *cell = new QWidget(form->parentWidget());
    auto *column = new QVBoxLayout(cell);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    control->setParent(cell);
    column->addWidget(control);
    auto *message = new QLabel(cell);
    message->setObjectName(QStringLiteral("settingsFieldMessage"));
    message->setProperty("settingKey", key);
    message->setWordWrap(true);
    message->hide();
    column->addWidget(message);
    if (textKey) {
        auto *label = new QLabel(form->parentWidget());
        label->setBuddy(control);
        translate(label, textKey, fallback);
        form->addRow(label, cell);
    } else {
        form->addRow(cell);
    }
    m_fields.append(Field{key, control, message, {}});
    return cell;
}

SettingsForm::Field *SettingsForm::field(const QString &key)
{
    for (Field &f : m_fields) {
        if (f.key == key)
            return &f;
    }
    return nullptr;
}

QCheckBox *SettingsForm::addCheck(QFormLayout *form, const QString &key, const char *textKey, const char *fallback,
                                  const char *objectName)
{
    auto *box = new QCheckBox;
    box->setObjectName(QString::fromLatin1(objectName));
    translate(box, textKey, fallback);
    row(form, box, key, nullptr, nullptr);
    m_fields.last().show = [box](const QJsonValue &value) {
        const QSignalBlocker blocker(box);
        box->setChecked(value.toBool());
    };
    connect(box, &QCheckBox::toggled, this, [this, key](bool on) { commit(key, on); });
    return box;
}

QComboBox *SettingsForm::addChoice(QFormLayout *form, const QString &key, const char *textKey, const char *fallback,
                                   const QList<Choice> &choices, const char *objectName)
{
    auto *combo = new QComboBox;
    combo->setObjectName(QString::fromLatin1(objectName));
    for (const Choice &choice : choices) {
        combo->addItem(QString(), choice.value.toVariant());
        translateItem(combo, combo->count() - 1, choice.textKey, choice.fallback);
    }
    row(form, combo, key, textKey, fallback);
    m_fields.last().show = [combo](const QJsonValue &value) {
        const QSignalBlocker blocker(combo);
        const int index = combo->findData(value.toVariant());
        if (index >= 0)
            combo->setCurrentIndex(index);
    };
    connect(combo, &QComboBox::activated, this,
            [this, key, combo](int index) { commit(key, QJsonValue::fromVariant(combo->itemData(index))); });
    return combo;
}

QLineEdit *SettingsForm::addText(QFormLayout *form, const QString &key, const char *textKey, const char *fallback,
                                 const char *objectName)
{
    auto *edit = new QLineEdit;
    edit->setObjectName(QString::fromLatin1(objectName));
    edit->setClearButtonEnabled(true);
    row(form, edit, key, textKey, fallback);
    m_fields.last().show = [edit](const QJsonValue &value) { edit->setText(value.toString()); };
    connect(edit, &QLineEdit::editingFinished, this, [this, key, edit] { commit(key, edit->text()); });
    return edit;
}

QComboBox *SettingsForm::addNameList(QFormLayout *form, const QString &key, const char *textKey, const char *fallback,
                                     const char *objectName)
{
    auto *combo = new QComboBox;
    combo->setObjectName(QString::fromLatin1(objectName));
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    // The list arrives after the window is laid out: room for a long name
    // ("America/Argentina/Buenos_Aires") from the start.
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    combo->setMinimumContentsLength(32);
    combo->completer()->setCaseSensitivity(Qt::CaseInsensitive);
    combo->completer()->setFilterMode(Qt::MatchContains);
    row(form, combo, key, textKey, fallback);
    m_fields.last().show = [combo](const QJsonValue &value) {
        const QSignalBlocker blocker(combo);
        combo->setEditText(value.toString());
    };
    connect(combo, &QComboBox::activated, this, [this, key, combo] { commit(key, combo->currentText()); });
    connect(combo->lineEdit(), &QLineEdit::editingFinished, this, [this, key, combo] { commit(key, combo->currentText()); });
    return combo;
}

void SettingsForm::setNameList(QComboBox *combo, const QStringList &names)
{
    const QSignalBlocker blocker(combo);
    const QString text = combo->currentText();
    combo->clear();
    combo->addItems(names);
    combo->setEditText(text);
}

QLabel *SettingsForm::addNote(QFormLayout *form, const char *textKey, const char *fallback)
{
    auto *note = new QLabel(form->parentWidget());
    note->setObjectName(QStringLiteral("settingsNote"));
    note->setWordWrap(true);
    translate(note, textKey, fallback);
    form->addRow(note);
    return note;
}

void SettingsForm::translate(QObject *target, const char *textKey, const char *fallback, const QStringList &args)
{
    m_texts.append(Text{target, textKey, fallback, args});
    apply(m_texts.last());
}

void SettingsForm::translateItem(QComboBox *combo, int index, const char *textKey, const char *fallback)
{
    // Names that stay as written in every language (a language's own name,
    // a skin's name) have no key.
    if (!textKey) {
        combo->setItemText(index, QString::fromUtf8(fallback));
        return;
    }
    m_texts.append(Text{combo, textKey, fallback, {}, index});
    combo->setItemText(index, ui::text(textKey, fallback));
}

void SettingsForm::retranslate()
{
    for (const Text &t : std::as_const(m_texts))
        apply(t);
}

void SettingsForm::apply(const Text &t)
{
    if (!t.target)
        return;
    const QString text = ui::text(t.key, t.fallback, t.args);
    if (auto *combo = qobject_cast<QComboBox *>(t.target); combo && t.item >= 0)
        combo->setItemText(t.item, text);
    else if (auto *label = qobject_cast<QLabel *>(t.target))
        label->setText(text);
    else if (auto *button = qobject_cast<QAbstractButton *>(t.target))
        button->setText(text);
    else if (auto *group = qobject_cast<QGroupBox *>(t.target))
        group->setTitle(text);
    else if (auto *widget = qobject_cast<QWidget *>(t.target))
        widget->setWindowTitle(text);
}

void SettingsForm::showMessage(const QString &key, const QString &text, bool problem)
{
    Field *f = field(key);
    if (!f || !f->message)
        return;
    f->message->setText(text);
    f->message->setStyleSheet(problem ? QStringLiteral("color: #c0392b;") : QString());
    f->message->setVisible(!text.isEmpty());
}

QString SettingsForm::message(const QString &key) const
{
    for (const Field &f : m_fields) {
        if (f.key == key)
            return f.message ? f.message->text() : QString();
    }
    return {};
}

void SettingsForm::commit(const QString &key, const QJsonValue &value)
{
    if (!m_editor)
        return;
    // A text field finishing without an edit, or a choice made again, is
    // not a change; a refused value is sent again when it is retried.
    if (m_editor->values().value(key) == value && message(key).isEmpty())
        return;
    m_editor->change(key, value);
}

void SettingsForm::showValues(const QJsonObject &values)
{
    for (Field &f : m_fields) {
        if (f.show && values.contains(f.key))
            f.show(values.value(f.key));
        showMessage(f.key, QString());
    }
}

} // namespace tarnix
