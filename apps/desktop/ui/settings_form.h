#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>

#include <functional>

class QBoxLayout;
class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QWidget;

namespace tarnix {

class SettingsEditor;

// Binds the settings window's controls to their keys: an operator's change
// goes to the editor, whose answer comes back to the control: the saved
// value, or the rule's text in the message line under the control (the
// control keeps what the operator typed so it can be corrected). Keeps the
// catalogue key of every text so that a change of language retitles all.
// Main thread.
class SettingsForm : public QObject
{
    Q_OBJECT

public:
    struct Choice {
        const char *textKey;
        const char *fallback;
        QJsonValue value;
    };

    explicit SettingsForm(SettingsEditor *editor, QObject *parent = nullptr);

    // A page: a scrollable column with a form in it, named for the skins.
    QFormLayout *addPage(QWidget *page);

    QCheckBox *addCheck(QFormLayout *form, const QString &key, const char *textKey, const char *fallback,
                        const char *objectName);
    QComboBox *addChoice(QFormLayout *form, const QString &key, const char *textKey, const char *fallback,
                         const QList<Choice> &choices, const char *objectName);
    // A text committed when editing finishes.
    QLineEdit *addText(QFormLayout *form, const QString &key, const char *textKey, const char *fallback,
                       const char *objectName);
    // An editable list of names, committed on a choice or when editing
    // finishes; its list arrives with the loaded values.
    QComboBox *addNameList(QFormLayout *form, const QString &key, const char *textKey, const char *fallback,
                           const char *objectName);
    // A note under the last row, such as when a setting takes effect.
    QLabel *addNote(QFormLayout *form, const char *textKey, const char *fallback);
    void setNameList(QComboBox *combo, const QStringList &names);

    // Keeps a text in step with the language.
    void translate(QObject *target, const char *textKey, const char *fallback, const QStringList &args = {});
    void translateItem(QComboBox *combo, int index, const char *textKey, const char *fallback);
    void retranslate();

    // The message line of a key, for texts the head adds too (a language
    // changed, or changed but not saved). A problem is shown in red.
    void showMessage(const QString &key, const QString &text, bool problem = true);
    QString message(const QString &key) const;

    // Sends an operator's change to the editor, unless it is the value saved.
    void commit(const QString &key, const QJsonValue &value);

private:
    struct Field {
        QString key;
        QPointer<QWidget> control;
        QPointer<QLabel> message;
        std::function<void(const QJsonValue &)> show;
    };
    struct Text {
        QPointer<QObject> target;
        const char *key;
        const char *fallback;
        QStringList args;
        int item = -1;  // a combo box's entry
    };

    QWidget *row(QFormLayout *form, QWidget *control, const QString &key, const char *textKey, const char *fallback);
    Field *field(const QString &key);
    void apply(const Text &text);
    void showValues(const QJsonObject &values);

    QPointer<SettingsEditor> m_editor;
    QList<Field> m_fields;
    QList<Text> m_texts;
};

} // namespace tarnix
