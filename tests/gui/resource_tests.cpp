#include "QtText.h"

#include <QImage>

TEST(Resources, HoldThePicturesInTheirSizes) {
    expectRewrites({"Lanvane/Resources/Icon_16x16.png -> 16x16", "Lanvane/Resources/Icon_32x32.png -> 32x32",
                    "Lanvane/Resources/Icon_64x64.png -> 64x64", "Lanvane/Resources/Icon_128x128.png -> 128x128",
                    "Lanvane/Resources/Icon_256x256.png -> 256x256", "Lanvane/Resources/network_adapter.png -> 16x16",
                    "Lanvane/Resources/camera.png -> 16x16", "Lanvane/Resources/error.png -> 32x32",
                    "corvoqtwidgets/Resources/AboutBackground.png -> 460x280"},
                   [](const QString &name) {
                       const QImage image(":/" + name);
                       return QString("%1x%2").arg(image.width()).arg(image.height());
                   });
}
