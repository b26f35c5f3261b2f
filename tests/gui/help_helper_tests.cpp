#include "CorvoQtBase/HelpHelper.h"
#include "QtText.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

// One test, because the look-up happens once in a process.
TEST(HelpHelper, OffersWhatIsInstalledAtTheFirstQuery) {
    QDir share(QCoreApplication::applicationDirPath() + "/../share");
    ASSERT_FALSE(share.exists()) << "left over, or another program's folder: " << share.path().toStdString();
    ASSERT_TRUE(share.mkpath("doc/C"));
    QFile document(share.filePath("doc/C/index.html"));
    ASSERT_TRUE(document.open(QIODevice::WriteOnly));
    const QString path = QDir::cleanPath(share.absoluteFilePath("doc/C/index.html"));

    EXPECT_TRUE(CHelpHelper::isHelpAvailable(CHelpHelper::HelpType_CProgGuide));
    EXPECT_EQ(CHelpHelper::getHelpPath(CHelpHelper::HelpType_CProgGuide), path);
    for (const int type : {0, 1, 3, 4, 5, 6, 7, -1, 1000})
        EXPECT_EQ(CHelpHelper::getHelpPath(static_cast<CHelpHelper::HelpType>(type)), "") << type;

    ASSERT_TRUE(share.removeRecursively());
    EXPECT_TRUE(CHelpHelper::isHelpAvailable(CHelpHelper::HelpType_CProgGuide));
}
