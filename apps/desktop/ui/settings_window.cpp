#include "ui/settings_window.h"

#include "shell/settings_editor.h"
#include "ui/settings_form.h"
#include "ui/settings_pages.h"
#include "ui/settings_shortcuts_page.h"
#include "ui/ui_text.h"

#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QListWidget>
#include <QScrollArea>
#include <QStackedWidget>

namespace tarnix {

SettingsWindow::SettingsWindow(SettingsEditor *editor, QWidget *audioOutputs, QWidget *parent)
    : QWidget(parent, Qt::Window), m_editor(editor)
{
    setObjectName(QStringLiteral("settingsWindow"));
    m_form = new SettingsForm(editor, this);
    auto *layout = new QHBoxLayout(this);
    m_pageList = new QListWidget(this);
    m_pageList->setObjectName(QStringLiteral("settingsPageList"));
    m_pageList->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    m_pages = new QStackedWidget(this);
    m_pages->setObjectName(QStringLiteral("settingsPages"));
    layout->addWidget(m_pageList, 0);
    layout->addWidget(m_pages, 1);

    addPage(buildGeneralPage(*m_form), "settings.page.general", "General");
    addPage(buildOnAirPage(*m_form), "settings.page.on_air", "ON AIR");
    addPage(buildAudioPage(*m_form, audioOutputs), "settings.page.audio", "Audio");
    addPage(buildPlaylistPage(*m_form), "settings.page.playlist", "Playlist");
    addPage(buildFilesPage(*m_form), "settings.page.files", "Files");
    addPage(buildOutputsPage(*m_form), "settings.page.outputs", "Outputs");
    m_shortcuts = new SettingsShortcutsPage(editor);
    m_pages->addWidget(m_shortcuts);
    m_titles.append(PageTitle{"settings.page.shortcuts", "Shortcuts"});
    m_pageList->addItem(QString());
    addPage(buildControlPage(*m_form), "settings.page.control", "Control");

    connect(m_pageList, &QListWidget::currentRowChanged, m_pages, &QStackedWidget::setCurrentIndex);
    if (editor)
        connect(editor, &SettingsEditor::loaded, this, [this](const QJsonObject &, const QStringList &timeZones) {
            if (auto *zones = findChild<QComboBox *>(QStringLiteral("settingsTimeZoneCombo")))
                m_form->setNameList(zones, timeZones);
        });
    m_pageList->setCurrentRow(0);
    retranslate();
    resize(860, 600);
}

SettingsWindow::~SettingsWindow() = default;

// Long pages scroll rather than squeeze their rows.
void SettingsWindow::addPage(QWidget *page, const char *textKey, const char *fallback)
{
    auto *scroll = new QScrollArea;
    scroll->setObjectName(page->objectName() + QStringLiteral("Scroll"));
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidget(page);
    m_pages->addWidget(scroll);
    m_titles.append(PageTitle{textKey, fallback});
    m_pageList->addItem(QString());
}

void SettingsWindow::open()
{
    if (!isVisible() && m_editor)
        m_editor->load();
    show();
    raise();
    activateWindow();
}

bool SettingsWindow::showPage(const QString &objectName)
{
    for (int i = 0; i < m_pages->count(); ++i) {
        QWidget *page = m_pages->widget(i);
        auto *scroll = qobject_cast<QScrollArea *>(page);
        const QString name = scroll && scroll->widget() ? scroll->widget()->objectName() : page->objectName();
        if (name == objectName) {
            m_pageList->setCurrentRow(i);
            return true;
        }
    }
    return false;
}

QString SettingsWindow::currentPage() const
{
    QWidget *page = m_pages->currentWidget();
    auto *scroll = qobject_cast<QScrollArea *>(page);
    return scroll && scroll->widget() ? scroll->widget()->objectName() : page ? page->objectName() : QString();
}

void SettingsWindow::showMessage(const QString &key, const QString &text, bool problem)
{
    m_form->showMessage(key, text, problem);
}

QString SettingsWindow::message(const QString &key) const
{
    return m_form->message(key);
}

void SettingsWindow::retranslate()
{
    setWindowTitle(ui::text("settings.window.title", "Settings"));
    for (int i = 0; i < m_titles.size() && i < m_pageList->count(); ++i)
        m_pageList->item(i)->setText(ui::text(m_titles.at(i).key, m_titles.at(i).fallback));
    m_form->retranslate();
    m_shortcuts->retranslate();
    // The list is as wide as its longest title in this language.
    m_pageList->setFixedWidth(m_pageList->sizeHintForColumn(0) + 2 * m_pageList->frameWidth() + 24);
}

void SettingsWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

} // namespace tarnix
