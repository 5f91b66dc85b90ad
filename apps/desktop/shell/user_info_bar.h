#pragma once

#include <QPointer>
#include <QWidget>

class QLabel;

namespace tarnix {

class UserInfoCenter;

// The one-line bar that shows the message of a UserInfoCenter. The text is
// resolved each time it is drawn, so a change of language re-renders the
// message on screen. Links answer the PFL question and open the audio
// device settings.
class UserInfoBar : public QWidget
{
    Q_OBJECT

public:
    UserInfoBar(UserInfoCenter *center, QWidget *parent = nullptr);

    // Renders the current message again; called on every change of message
    // or language.
    void refresh();

protected:
    void changeEvent(QEvent *event) override;

private:
    void onLinkActivated(const QString &link);

    QPointer<UserInfoCenter> m_center;
    QLabel *m_severity = nullptr;
    QLabel *m_source = nullptr;
    QLabel *m_message = nullptr;
};

} // namespace tarnix
