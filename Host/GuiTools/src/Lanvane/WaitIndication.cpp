#include "Lanvane/WaitIndication.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QWidget>
#include <QWindow>

namespace {

/// Whether an event's receiver is part of the dialog that the user sees in front, or of what has popped up there.
bool belongsToModal(QObject *receiver) {
    if (QApplication::activePopupWidget())
        return true;
    const QWidget *const modal = QApplication::activeModalWidget();
    if (!modal)
        return false;
    const auto *const widget = qobject_cast<QWidget *>(receiver);
    return widget ? widget->window() == modal : receiver == modal->windowHandle();
}

} // namespace

WaitCursor::WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }

WaitCursor::~WaitCursor() { QApplication::restoreOverrideCursor(); }

InputBarrier::InputBarrier(Admission admission) : m_Admission(admission) { qApp->installEventFilter(this); }

bool InputBarrier::eventFilter(QObject *watched, QEvent *event) {
    switch (event->type()) {
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::ContextMenu:
    case QEvent::Wheel:
        break;
    default:
        return false;
    }
    if (m_Admission == AdmitModal && belongsToModal(watched))
        return false;
    event->accept(); // a ShortcutOverride would else be tried as a shortcut
    return true;
}

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

void processEventsWithoutUser() { QApplication::processEvents(QEventLoop::ExcludeUserInputEvents); }

void discardUserInput() {
    const InputBarrier barrier(InputBarrier::AdmitNothing);
    QApplication::processEvents();
}
