// Writes two JPEG files of a color gradient with noise, as a camera makes them.
//   camerapicture FOLDER WIDTH HEIGHT

#include <QDir>
#include <QImage>

#include <cstdlib>

int main(int argc, char *argv[])
{
    if (argc != 4)
        return 2;
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    quint32 noise = 1;
    for (int k = 0; k < 2; ++k) {
        QImage picture(std::atoi(argv[2]), std::atoi(argv[3]), QImage::Format_RGB32);
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) {
                noise = noise * 1664525 + 1013904223;
                const int grain = int(noise >> 28);
                picture.setPixel(x, y,
                                 qRgb((x + k * 40 + grain) & 255, (y + grain) & 255, (x + y) / 2 & 255));
            }
        if (!picture.save(folder.filePath(QStringLiteral("%1.jpg").arg(k)), "jpg", 85))
            return 1;
    }
    return 0;
}
