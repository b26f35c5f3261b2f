#include "Lanvane/WaitIndication.h"

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

namespace {

/// Releases pass, for what was pressed before.
class InputBarrier : public QObject {
public:
    bool eventFilter(QObject * /*watched*/, QEvent *event) override {
        switch (event->type()) {
        case QEvent::ShortcutOverride:
            event->accept(); // else it would be tried as a shortcut
            return true;
        case QEvent::KeyPress:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
        case QEvent::ContextMenu:
        case QEvent::Wheel:
            return true;
        default:
            return false;
        }
    }
};

} // namespace

WaitCursor::WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }

WaitCursor::~WaitCursor() { QApplication::restoreOverrideCursor(); }

void awaitExposure(const QWidget &window) {
    constexpr int Patience_ms = 200;
    const QWindow *const handle = window.windowHandle();
    if (!handle)
        return;
    QElapsedTimer elapsed;
    elapsed.start();
    do {
        processEventsWithoutUser();
    } while (!handle->isExposed() && !elapsed.hasExpired(Patience_ms));
    processEventsWithoutUser();
}

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
    awaitExposure(*m_Box);
}

WaitBox::~WaitBox() = default;

void processEventsWithoutUser() { QApplication::processEvents(QEventLoop::ExcludeUserInputEvents); }

void pauseWithoutUser(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

void discardUserInput() {
    InputBarrier barrier;
    qApp->installEventFilter(&barrier);
    QApplication::processEvents();
}
