#include "Lanvane/WaitBox.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

WaitBox::WaitBox(QWidget *parent, std::function<void()> onCancel)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      m_OnCancel(std::move(onCancel)), m_pStep(new QLabel(this)), m_pTime(new QLabel(this)) {
    constexpr int LeastWidth = 44; // in widths of a digit: steps follow each other without a jump
    setObjectName(QStringLiteral("WaitBox"));
    setWindowTitle(parent->window()->windowTitle());
    setWindowModality(Qt::WindowModal);
    for (QLabel *label : {m_pStep, m_pTime}) {
        label->setTextFormat(Qt::PlainText);
        label->setAlignment(Qt::AlignCenter);
    }
    m_pStep->setMinimumWidth(LeastWidth * fontMetrics().horizontalAdvance(QLatin1Char('0')));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    buttons->setCenterButtons(true);
    connect(buttons, &QDialogButtonBox::rejected, this, &WaitBox::reject);
    QPushButton *cancel = buttons->button(QDialogButtonBox::Cancel);
    cancel->setAutoDefault(false); // the key that started the operation may still be held down
    m_pCancel = cancel;
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 16);
    layout->setSpacing(12);
    for (QWidget *widget :
         {static_cast<QWidget *>(m_pStep), static_cast<QWidget *>(m_pTime), static_cast<QWidget *>(buttons)})
        layout->addWidget(widget);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    setFocusPolicy(Qt::StrongFocus); // and so does the space bar not cancel at once
    setFocus();
    m_Delay.setSingleShot(true);
    connect(&m_Delay, &QTimer::timeout, this, &QWidget::show);
    connect(&m_Tick, &QTimer::timeout, this, &WaitBox::showTime);
    m_Tick.start(1000);
    m_Elapsed.start();
    showTime();
}

WaitBox::~WaitBox() { withdraw(); }

void WaitBox::setStep(const QString &text) { m_pStep->setText(text); }

void WaitBox::showAfter(int milliseconds) { m_Delay.start(milliseconds); }

void WaitBox::withdraw() {
    m_Delay.stop();
    const bool hasFocus = isActiveWindow();
    hide();
    if (hasFocus)
        parentWidget()->activateWindow(); // not every window system does
}

void WaitBox::reject() {
    if (const auto onCancel = std::exchange(m_OnCancel, nullptr))
        onCancel();
    m_pCancel->setEnabled(false);
    showTime();
}

void WaitBox::showTime() {
    m_pTime->setText((m_OnCancel ? QStringLiteral("Elapsed: %1 s") : QStringLiteral("Cancelling... %1 s"))
                         .arg(m_Elapsed.elapsed() / 1000));
}
