#include "Lanvane/WaitIndication.h"

#include <QApplication>
#include <QDialog>
#include <QEventLoop>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>

WaitCursor::WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }

WaitCursor::~WaitCursor() { QApplication::restoreOverrideCursor(); }

WaitBox::WaitBox(const QString &text, QWidget *parent)
    : m_Box(std::make_unique<QDialog>(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)) {
    m_Box->setObjectName(QStringLiteral("WaitBox"));
    m_Box->setWindowTitle(parent ? parent->window()->windowTitle() : QString());
    auto *label = new QLabel(text, m_Box.get());
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignCenter);
    auto *layout = new QVBoxLayout(m_Box.get());
    layout->setContentsMargins(24, 20, 24, 20);
    layout->addWidget(label);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    m_Box->show();
    processEventsWithoutUser();
}

WaitBox::~WaitBox() = default;

void processEventsWithoutUser() { QApplication::processEvents(QEventLoop::ExcludeUserInputEvents); }

void pauseWithoutUser(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}
