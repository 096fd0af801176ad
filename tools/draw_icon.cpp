// Draws an SVG file as square pictures, one for each size: draw-icon FILE.svg FOLDER NAME SIZE...
// The pictures are FOLDER/SIZExSIZE/apps/NAME.png.

#include <QDir>
#include <QImage>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>
#include <cstdio>

int main(int argc, char** argv) {
  if (argc < 5) {
    std::fprintf(stderr, "usage: draw-icon FILE.svg FOLDER NAME SIZE...\n");
    return 2;
  }
  QSvgRenderer drawing(QString::fromLocal8Bit(argv[1]));
  if (!drawing.isValid()) {
    std::fprintf(stderr, "draw-icon: %s is no drawing\n", argv[1]);
    return 1;
  }
  for (int at = 4; at < argc; ++at) {
    const int size = QString::fromLocal8Bit(argv[at]).toInt();
    const QString folder = QStringLiteral("%1/%2x%2/apps").arg(argv[2]).arg(size);
    const QString file = folder + '/' + argv[3] + ".png";
    QImage picture(size, size, QImage::Format_ARGB32_Premultiplied);
    if (size < 1 || picture.isNull() || !QDir().mkpath(folder)) {
      std::fprintf(stderr, "draw-icon: %s cannot be drawn\n", argv[at]);
      return 1;
    }
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    drawing.render(&painter);
    painter.end();
    if (!picture.save(file, "PNG")) {
      std::fprintf(stderr, "draw-icon: %s cannot be written\n", qPrintable(file));
      return 1;
    }
  }
  return 0;
}
