#include "Lanvane/aboutdialog.h"

#include "Lanvane/AboutDialogImpl.h"

#include <QCoreApplication>

AboutDialogImpl::AboutDialogImpl(QWidget *parent) : QDialog(parent) {
    m_ui.setupUi(this);
    m_labelTemplate = m_ui.lblAbout->text();
    setWindowTitle(QStringLiteral("About %1").arg(QCoreApplication::applicationName()));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    UpdateLabel();
}

void AboutDialogImpl::setProductVersion(const QString &version) {
    m_productVersion = version;
    UpdateLabel();
}

void AboutDialogImpl::setCopyrightTimeRange(const QString &timeRange) {
    m_copyrightTimeRange = timeRange;
    UpdateLabel();
}

void AboutDialogImpl::UpdateLabel() {
    m_ui.lblAbout->setText(m_labelTemplate.arg(QCoreApplication::applicationName(), m_productVersion,
                                               m_copyrightTimeRange, QCoreApplication::organizationName(),
                                               QCoreApplication::organizationDomain()));
}

AboutDialog::AboutDialog(QWidget *parent) : m_impl(std::make_unique<AboutDialogImpl>(parent)) {}

AboutDialog::~AboutDialog() = default;

void AboutDialog::setProductVersion(const QString &version) { m_impl->setProductVersion(version); }

void AboutDialog::setCopyrightTimeRange(const QString &timeRange) { m_impl->setCopyrightTimeRange(timeRange); }

int AboutDialog::exec() { return m_impl->exec(); }
