#pragma once

#include "ui_aboutdialog.h"

#include <QDialog>
#include <QString>

/// The window behind AboutDialog.
class AboutDialogImpl : public QDialog {
public:
    explicit AboutDialogImpl(QWidget *parent);

    void setProductVersion(const QString &version);
    void setCopyrightTimeRange(const QString &timeRange);

private:
    void UpdateLabel();

    Ui_AboutDialog m_ui{};
    QString m_labelTemplate; ///< the label's text as the form has it, with the places to fill in
    QString m_productVersion;
    QString m_copyrightTimeRange = QStringLiteral("2019");
};
