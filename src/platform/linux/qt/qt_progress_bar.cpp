#include "platform/linux/qt/qt_progress_bar.h"

#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionProgressBar>
#include <cmath>

namespace platform {

ProgressBar::ProgressBar(QWidget* parent) : QProgressBar(parent) {
  // The two pictures include the window's background.
  setAttribute(Qt::WA_OpaquePaintEvent);
}

QPixmap ProgressBar::Draw(int value) const {
  QPixmap picture(size() * devicePixelRatioF());
  picture.setDevicePixelRatio(devicePixelRatioF());
  picture.fill(palette().color(QPalette::Window));
  QStyleOptionProgressBar option;
  initStyleOption(&option);
  option.progress = value;
  QPainter painter(&picture);
  style()->drawControl(QStyle::CE_ProgressBar, &option, &painter, this);
  return picture;
}

void ProgressBar::DrawBoth() {
  empty_ = Draw(minimum());
  full_ = Draw(maximum());
}

void ProgressBar::paintEvent(QPaintEvent* /*event*/) {
  if (full_.size() != size() * devicePixelRatioF()) DrawBoth();
  const double share = static_cast<double>(value() - minimum()) / (maximum() - minimum());
  const int edge = static_cast<int>(std::lround(width() * share));
  const double scale = devicePixelRatioF();
  QPainter painter(this);
  const auto show = [&](const QPixmap& picture, int left, int right) {
    const double length = right - left;
    painter.drawPixmap(QRectF(left, 0, length, height()), picture,
                       QRectF(left * scale, 0, length * scale, height() * scale));
  };
  show(full_, 0, edge);
  show(empty_, edge, width());
}

void ProgressBar::changeEvent(QEvent* event) {
  full_ = QPixmap();
  QProgressBar::changeEvent(event);
}

}  // namespace platform
