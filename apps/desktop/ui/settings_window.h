#pragma once

#include <QPointer>
#include <QWidget>

class QListWidget;
class QStackedWidget;

namespace tarnix {

class SettingsEditor;
class SettingsForm;
class SettingsShortcutsPage;

// The settings window: a list of pages on the left, the chosen page on the
// right. Each control saves its key when it changes, checked by the rules
// of a settings import; the head takes up what was saved through the
// editor's changed() signal, as it takes up restored settings. The
// shortcuts page saves its table as a whole. Main thread.
class SettingsWindow : public QWidget
{
    Q_OBJECT

public:
    // `audioOutputs`, when given, is placed on the audio page and becomes
    // the window's child.
    SettingsWindow(SettingsEditor *editor, QWidget *audioOutputs = nullptr, QWidget *parent = nullptr);
    ~SettingsWindow() override;

    // Reads the values again unless the window is already open, then shows
    // and raises it.
    void open();
    // Shows the page of that object name ("settingsShortcutsPage").
    bool showPage(const QString &objectName);
    QString currentPage() const;

    // The message line under a key's control; the head adds what applying
    // a saved value said (a language changed but not saved).
    void showMessage(const QString &key, const QString &text, bool problem = true);
    QString message(const QString &key) const;

protected:
    void changeEvent(QEvent *event) override;

private:
    void addPage(QWidget *page, const char *textKey, const char *fallback);
    void retranslate();

    QPointer<SettingsEditor> m_editor;
    SettingsForm *m_form = nullptr;
    QListWidget *m_pageList = nullptr;
    QStackedWidget *m_pages = nullptr;
    SettingsShortcutsPage *m_shortcuts = nullptr;
    struct PageTitle {
        const char *key;
        const char *fallback;
    };
    QList<PageTitle> m_titles;
};

} // namespace tarnix
