#pragma once

#include <QPointer>
#include <QStringList>
#include <QWidget>

#include <chrono>
#include <functional>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPlainTextEdit;
class QPushButton;
class QTimer;

namespace tarnix {

class BackgroundIoQueue;
class UiLanguageManager;

// The window that shows the newest log records, with search, a level filter
// and export of what is shown. It reads the log's recent lines on a timer
// while it is visible; the export is written by the background I/O queue.
// Main thread only.
class LogViewer : public QWidget
{
    Q_OBJECT

public:
    LogViewer(BackgroundIoQueue *ioQueue, QWidget *parent = nullptr,
              std::chrono::milliseconds refreshInterval = std::chrono::milliseconds(1000));

    // Asks for the export file; the application shows a save dialog. Tests
    // replace it so nothing waits on a click.
    using SaveFileChooser = std::function<QString(QWidget *parent)>;
    void setSaveFileChooser(SaveFileChooser chooser);

    // Reads the recent lines (with Live update checked) and refilters when
    // the lines, the filter or the search changed.
    void refresh();

    // Writes the displayed text to a file chosen by the chooser.
    void saveDisplayed();

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void retranslate();
    void updateStatus();

    QPointer<BackgroundIoQueue> m_ioQueue;
    SaveFileChooser m_chooseFile;
    QTimer *m_timer = nullptr;
    QLineEdit *m_search = nullptr;
    QComboBox *m_filter = nullptr;
    QPlainTextEdit *m_text = nullptr;
    QCheckBox *m_follow = nullptr;
    QPushButton *m_save = nullptr;
    QPushButton *m_folder = nullptr;
    QLabel *m_status = nullptr;
    QStringList m_lines;
    QStringList m_shownFor;
    QString m_shownKey;
    bool m_shownOnce = false;
    QString m_saveStatus;
};

// Adds "Show Log" and the checkable "Debug Mode" to the menu. The viewer is
// created on first use as a window of the given parent.
void installLogViewer(QMenu *menu, QWidget *parent, UiLanguageManager *languageManager,
                      BackgroundIoQueue *ioQueue);

} // namespace tarnix
