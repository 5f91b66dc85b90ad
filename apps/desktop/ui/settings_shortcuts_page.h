#pragma once

#include <QJsonObject>
#include <QPointer>
#include <QWidget>

class QLabel;
class QPushButton;
class QTableWidget;

namespace tarnix {

class SettingsEditor;

// The shortcuts page: the 64 shortcuts with two keys each. Nothing is
// saved while keys are edited; Save checks the whole table by the
// keyboard's own rules and saves it only whole, and Load Defaults fills the
// table without saving. Main thread.
class SettingsShortcutsPage : public QWidget
{
    Q_OBJECT

public:
    explicit SettingsShortcutsPage(SettingsEditor *editor, QWidget *parent = nullptr);

    // The bindings object the table shows, every shortcut named.
    QJsonObject tableBindings() const;
    void showBindings(const QJsonObject &stored);
    void loadDefaults();
    void save();
    QString status() const;
    void retranslate();

private:
    void setStatus(const QString &text);

    QPointer<SettingsEditor> m_editor;
    QTableWidget *m_table = nullptr;
    QLabel *m_status = nullptr;
    QPushButton *m_save = nullptr;
    QPushButton *m_defaults = nullptr;
};

} // namespace tarnix
