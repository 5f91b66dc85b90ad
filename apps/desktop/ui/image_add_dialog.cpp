#include "ui/image_add_dialog.h"

#include "shell/localized_text.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <cmath>

namespace tarnix {

ImageAddDialog::ImageAddDialog(const QString &fileName, QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("imageAddDialog"));
    setWindowTitle(localized("image_add.title"));

    m_file = new QLabel(LocalizedText(QStringLiteral("image_add.file"), {fileName}).toString(), this);
    m_file->setObjectName(QStringLiteral("imageAddFileLabel"));
    m_file->setTextInteractionFlags(Qt::TextSelectableByMouse);

    // Seconds with hundredths: the operator thinks in seconds, the item
    // keeps milliseconds.
    m_seconds = new QDoubleSpinBox(this);
    m_seconds->setObjectName(QStringLiteral("imageAddDurationSpinBox"));
    m_seconds->setDecimals(2);
    m_seconds->setSingleStep(0.5);
    m_seconds->setRange(kMinimumDurationMs / 1000.0, kMaximumDurationMs / 1000.0);
    m_seconds->setSuffix(QStringLiteral(" s"));
    m_seconds->setValue(kDefaultDurationMs / 1000.0);
    m_seconds->setAccelerated(true);

    m_remember = new QCheckBox(localized("image_add.remember"), this);
    m_remember->setObjectName(QStringLiteral("imageAddRememberCheckBox"));

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->setObjectName(QStringLiteral("imageAddButtonBox"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *form = new QFormLayout;
    form->addRow(localized("image_add.duration"), m_seconds);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_file);
    layout->addLayout(form);
    layout->addWidget(m_remember);
    layout->addWidget(buttons);
    m_seconds->setFocus();
    m_seconds->selectAll();
}

qint64 ImageAddDialog::durationMs() const
{
    return qBound(kMinimumDurationMs, qint64(std::llround(m_seconds->value() * 1000.0)), kMaximumDurationMs);
}

void ImageAddDialog::setDurationMs(qint64 durationMs)
{
    m_seconds->setValue(qBound(kMinimumDurationMs, durationMs, kMaximumDurationMs) / 1000.0);
}

bool ImageAddDialog::rememberForSession() const
{
    return m_remember->isChecked();
}

} // namespace tarnix
