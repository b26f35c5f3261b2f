#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QTimer>

#include <functional>

class QAbstractButton;
class QLabel;

/// The box of a long operation: its step, how long it has run, and a way to cancel it (button, Esc, close button). It
/// is modal for its window and shows itself only when there is something to wait for.
class WaitBox : public QDialog {
    Q_OBJECT

public:
    /// \param onCancel called once.
    WaitBox(QWidget *parent, std::function<void()> onCancel);
    ~WaitBox() override;

    void setStep(const QString &text);
    /// Not before this time is over, so that what is done sooner makes nothing flicker.
    void showAfter(int milliseconds);
    /// Until showAfter is called again.
    void withdraw();
    /// Cancels; the box stays until the operation has ended.
    void reject() override;

private:
    void showTime();

    std::function<void()> m_OnCancel;
    QLabel *m_pStep;
    QLabel *m_pTime;
    QAbstractButton *m_pCancel;
    QTimer m_Delay;
    QTimer m_Tick;
    QElapsedTimer m_Elapsed;
};
