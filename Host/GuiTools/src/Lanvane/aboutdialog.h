#pragma once

#include <QString>

#include <memory>

class AboutDialogImpl;
class QWidget;

/// The modal dialog that shows name, version, years and web site of the application. The name, the organisation and its
/// domain come from the application object. Must not outlive \p parent.
class AboutDialog {
public:
    explicit AboutDialog(QWidget *parent);
    ~AboutDialog();
    AboutDialog(const AboutDialog &) = delete;
    AboutDialog &operator=(const AboutDialog &) = delete;

    void setProductVersion(const QString &version);
    /// "2019" at first.
    void setCopyrightTimeRange(const QString &timeRange);

    /// Shows the dialog until the user closes it. \returns a QDialog::DialogCode.
    int exec();

private:
    std::unique_ptr<AboutDialogImpl> m_impl;
};
