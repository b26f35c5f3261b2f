#pragma once

#include <QObject>

class QWidget;

/// Shows the wait cursor as long as it lives. Guards nest.
class WaitCursor {
public:
    WaitCursor();
    ~WaitCursor();
    Q_DISABLE_COPY(WaitCursor)
};

/// As long as it lives, keys and clicks are dropped when they arrive. Releases pass, for what was pressed before.
class InputBarrier : public QObject {
public:
    enum Admission { AdmitNothing, AdmitModal /**< what is for the modal dialog in front, if there is one */ };

    explicit InputBarrier(Admission admission);
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    Admission m_Admission;
};

/// Lets a window that was just shown paint before something blocks: a window system takes a moment. At most 200 ms, and
/// not at all for a window that was never shown.
void awaitExposure(const QWidget &window);
/// Lets the windows paint and posted events arrive; what the user does waits, to be dropped by discardUserInput.
void processEventsWithoutUser();
/// Drops the keys and clicks that waited while something blocked: they were not meant for what the window shows now.
void discardUserInput();
