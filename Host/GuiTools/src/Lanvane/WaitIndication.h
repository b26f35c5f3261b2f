#pragma once

#include <QtGlobal>

#include <memory>

class QDialog;
class QString;
class QWidget;

/// Shows the wait cursor as long as it lives. Guards nest.
class WaitCursor {
public:
    WaitCursor();
    ~WaitCursor();
    Q_DISABLE_COPY(WaitCursor)
};

/// A small modeless box with a text, and the wait cursor, for the time of a long operation.
class WaitBox {
public:
    WaitBox(const QString &text, QWidget *parent);
    ~WaitBox();
    Q_DISABLE_COPY(WaitBox)

private:
    WaitCursor m_Cursor;
    std::unique_ptr<QDialog> m_Box;
};

/// Lets a window that was just shown paint before something blocks: a window system takes a moment. At most 200 ms, and
/// not at all for a window that was never shown.
void awaitExposure(const QWidget &window);
/// Lets the windows paint and posted events arrive; what the user does waits, to be dropped by discardUserInput.
void processEventsWithoutUser();
/// The same for a time in milliseconds.
void pauseWithoutUser(int milliseconds);
/// Drops the keys and clicks that waited while something blocked: they were not meant for what the window shows now.
void discardUserInput();
