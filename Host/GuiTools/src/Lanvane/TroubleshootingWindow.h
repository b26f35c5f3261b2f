#pragma once

#include <QDialog>

/// A page on what can be wrong when a camera does not show up or cannot be used, made of the list of findings in the
/// documentation.
class TroubleshootingWindow : public QDialog {
    Q_OBJECT

public:
    explicit TroubleshootingWindow(QWidget *parent);
};

/// The page as HTML. \param findings Markdown, with a table whose rows are code, severity, meaning, evidence, remedy.
QString troubleshootingPage(const QString &findings);
