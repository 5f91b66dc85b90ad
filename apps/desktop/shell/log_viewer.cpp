#include "shell/log_viewer.h"

#include "shell/application_log.h"
#include "shell/background_io_queue.h"
#include "shell/localized_text.h"
#include "shell/log_view_filter.h"
#include "shell/ui_language_manager.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSaveFile>
#include <QScrollBar>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

namespace tarnix {

LogViewer::LogViewer(BackgroundIoQueue *ioQueue, QWidget *parent, std::chrono::milliseconds refreshInterval)
    : QWidget(parent, Qt::Window)
    , m_ioQueue(ioQueue)
    , m_timer(new QTimer(this))
    , m_search(new QLineEdit(this))
    , m_filter(new QComboBox(this))
    , m_text(new QPlainTextEdit(this))
    , m_follow(new QCheckBox(this))
    , m_save(new QPushButton(this))
    , m_folder(new QPushButton(this))
    , m_status(new QLabel(this))
{
    setObjectName(QStringLiteral("logViewer"));
    m_search->setObjectName(QStringLiteral("logSearch"));
    m_filter->setObjectName(QStringLiteral("logLevelFilter"));
    m_text->setObjectName(QStringLiteral("logText"));
    m_follow->setObjectName(QStringLiteral("logFollow"));
    m_save->setObjectName(QStringLiteral("logSave"));
    m_folder->setObjectName(QStringLiteral("logFolder"));
    m_status->setObjectName(QStringLiteral("logStatus"));
    m_text->setReadOnly(true);
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_follow->setChecked(true);
    m_filter->addItem(QString());
    m_filter->addItem(QString());

    auto *top = new QHBoxLayout;
    top->addWidget(m_search, 1);
    top->addWidget(m_filter);
    top->addWidget(m_follow);
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(m_status, 1);
    bottom->addWidget(m_save);
    bottom->addWidget(m_folder);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_text, 1);
    layout->addLayout(bottom);
    resize(900, 600);

    m_chooseFile = [this](QWidget *dialogParent) {
        return QFileDialog::getSaveFileName(dialogParent, windowTitle(), QStringLiteral("tarnix-log.txt"),
                                            QStringLiteral("Text (*.txt)"));
    };
    m_timer->setInterval(refreshInterval);
    connect(m_timer, &QTimer::timeout, this, &LogViewer::refresh);
    connect(m_search, &QLineEdit::textChanged, this, &LogViewer::refresh);
    connect(m_filter, &QComboBox::currentIndexChanged, this, &LogViewer::refresh);
    connect(m_follow, &QCheckBox::toggled, this, &LogViewer::refresh);
    connect(m_save, &QPushButton::clicked, this, &LogViewer::saveDisplayed);
    connect(m_folder, &QPushButton::clicked, this,
            [] { QDesktopServices::openUrl(QUrl::fromLocalFile(logDirectory())); });
    retranslate();
}

void LogViewer::setSaveFileChooser(SaveFileChooser chooser)
{
    m_chooseFile = std::move(chooser);
}

void LogViewer::retranslate()
{
    setWindowTitle(localized("logs.show"));
    m_search->setPlaceholderText(localized("logs.search"));
    m_filter->setItemText(kLogFilterAll, localized("logs.all"));
    m_filter->setItemText(kLogFilterWarnings, localized("logs.warnings"));
    m_follow->setText(localized("logs.follow"));
    m_save->setText(localized("logs.save"));
    m_folder->setText(localized("logs.folder"));
    updateStatus();
}

void LogViewer::updateStatus()
{
    if (!m_saveStatus.isEmpty()) {
        m_status->setText(m_saveStatus);
        return;
    }
    const QString error = lastError();
    m_status->setText(error.isEmpty()
                          ? LocalizedText(QStringLiteral("logs.retention"), {logDirectory()}).toString()
                          : LocalizedText(QStringLiteral("logs.failed"), {error}).toString());
}

void LogViewer::refresh()
{
    updateStatus();
    if (m_follow->isChecked())
        m_lines = recentLines();
    const QString key = QStringLiteral("%1|%2").arg(m_filter->currentIndex()).arg(m_search->text());
    if (m_shownOnce && key == m_shownKey && m_lines == m_shownFor)
        return;
    m_shownOnce = true;
    m_shownKey = key;
    m_shownFor = m_lines;

    QScrollBar *bar = m_text->verticalScrollBar();
    const bool atEnd = bar->value() >= bar->maximum();
    const int position = bar->value();
    m_text->setPlainText(filterLogLines(m_lines, m_filter->currentIndex(), m_search->text())
                             .join(QLatin1Char('\n')));
    bar->setValue(atEnd ? bar->maximum() : position);
}

void LogViewer::saveDisplayed()
{
    if (!m_ioQueue)
        return;
    const QString path = m_chooseFile ? m_chooseFile(this) : QString();
    if (path.isEmpty())
        return;
    const QByteArray text = m_text->toPlainText().toUtf8();
    m_save->setEnabled(false);
    QPointer<LogViewer> self(this);
    m_ioQueue->enqueue(
        [path, text](BackgroundIoQueue::Result &result) {
            QSaveFile file(path);
            if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit()) {
                result.success = false;
                result.errorText = file.errorString();
                return;
            }
            result.success = true;
        },
        [self, path](const BackgroundIoQueue::Result &result) {
            if (!result.success)
                writeLog(LogLevel::Error, QStringLiteral("LOGGER"),
                         QStringLiteral("Export failed: %1").arg(result.errorText));
            if (!self)
                return;
            self->m_save->setEnabled(true);
            self->m_saveStatus = result.success
                ? LocalizedText(QStringLiteral("logs.saved"), {path}).toString()
                : LocalizedText(QStringLiteral("logs.failed"), {result.errorText}).toString();
            self->updateStatus();
        });
}

void LogViewer::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    refresh();
    m_timer->start();
}

void LogViewer::hideEvent(QHideEvent *event)
{
    m_timer->stop();
    m_saveStatus.clear();
    QWidget::hideEvent(event);
}

void LogViewer::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

void installLogViewer(QMenu *menu, QWidget *parent, UiLanguageManager *languageManager,
                      BackgroundIoQueue *ioQueue)
{
    auto *showAction = menu->addAction(localized("logs.show"));
    showAction->setObjectName(QStringLiteral("showLogAction"));
    auto *debugAction = menu->addAction(localized("logs.debug"));
    debugAction->setObjectName(QStringLiteral("debugModeAction"));
    debugAction->setCheckable(true);
    debugAction->setChecked(debugMode());

    auto viewer = std::make_shared<QPointer<LogViewer>>();
    QObject::connect(showAction, &QAction::triggered, menu, [viewer, parent, ioQueue] {
        if (!*viewer)
            *viewer = new LogViewer(ioQueue, parent);
        (*viewer)->show();
        (*viewer)->raise();
        (*viewer)->activateWindow();
    });
    QObject::connect(debugAction, &QAction::toggled, menu, [](bool on) { setDebugMode(on); });
    if (languageManager) {
        QObject::connect(languageManager, &UiLanguageManager::languageChanged, menu, [showAction, debugAction] {
            showAction->setText(localized("logs.show"));
            debugAction->setText(localized("logs.debug"));
        });
    }
}

} // namespace tarnix
