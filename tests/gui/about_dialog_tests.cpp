#include "Lanvane/aboutdialog.h"
#include "QtText.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QTextDocumentFragment>
#include <QTimer>
#include <QtTest>

TEST(AboutDialogTest, ShowsWhatTheApplicationIs) {
    QWidget parent;
    AboutDialog about(&parent);
    about.setProductVersion("1.0.13.0 64-Bit");
    about.setCopyrightTimeRange("2019-2021");

    QString title;
    QString text;
    QTimer::singleShot(0, &parent, [&] {
        QWidget *dialog = QApplication::activeModalWidget();
        ASSERT_NE(dialog, nullptr);
        title = dialog->windowTitle();
        text = QTextDocumentFragment::fromHtml(dialog->findChild<QLabel *>("lblAbout")->text()).toPlainText();
        const auto *buttons = dialog->findChild<QDialogButtonBox *>("buttonBox");
        QTest::mouseClick(buttons->button(QDialogButtonBox::Ok), Qt::LeftButton);
    });
    about.exec();
    EXPECT_EQ(title, "About Ostra Lanvane");
    EXPECT_EQ(text, QString::fromUtf8("Ostra Lanvane\nVersion 1.0.13.0 64-Bit\n"
                                      "Copyright © 2019-2021 Quorel\nquorel.example"));
}
