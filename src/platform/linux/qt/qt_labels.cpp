#include "platform/linux/qt/qt_labels.h"

#include <QPainter>
#include <QTextLayout>

#include "platform/linux/qt/qt_application.h"

namespace platform {
namespace {

constexpr int kPictureSize = 48;

}  // namespace

QStringList BreakLines(const QString& text, const QFont& font, int width) {
  QStringList lines;
  for (const QString& part : text.split('\n')) {
    QTextLayout layout(part, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
      line.setLineWidth(width);
      lines.push_back(part.mid(line.textStart(), line.textLength()));
    }
    layout.endLayout();
  }
  return lines;
}

FixedLabel::FixedLabel(int lines, QWidget* parent) : QLabel(parent), lines_(lines) {
  setTextFormat(Qt::PlainText);
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void FixedLabel::SetText(const std::string& text) {
  const QString shown = ToQt(text);
  if (shown == QLabel::text()) return;
  setText(shown);
  // Escaped as markup: a tip that happens to look like markup would be rendered as such.
  const QStringList lines = BreakLines(shown, font(), width());
  const QString tip = lines.join('\n').toHtmlEscaped().replace('\n', "<br>");
  setToolTip(lines.size() <= lines_ ? QString() : "<nobr>" + tip + "</nobr>");
  repaint();
}

QSize FixedLabel::minimumSizeHint() const {
  return {0, fontMetrics().lineSpacing() * lines_};
}

void FixedLabel::paintEvent(QPaintEvent* /*event*/) {
  const QFontMetrics metrics = fontMetrics();
  QString shown = text();
  auto lines = BreakLines(shown, font(), width());
  // Line ends waste room, so that the first guess may still be a line too long.
  for (int room = width() * lines_; lines.size() > lines_ && room > 0;
       room -= metrics.averageCharWidth()) {
    shown = metrics.elidedText(text().replace('\n', ' '), Qt::ElideMiddle, room);
    lines = BreakLines(shown, font(), width());
  }
  QPainter painter(this);
  painter.setPen(palette().color(foregroundRole()));
  int baseline = metrics.ascent();
  for (const QString& line : lines) {
    painter.drawText(0, baseline, line);
    baseline += metrics.lineSpacing();
  }
}

PictureView::PictureView(QWidget* parent) : QWidget(parent) {
  setFixedSize(kPictureSize, kPictureSize);
}

void PictureView::SetPicture(const std::string& name) {
  if (name == name_) return;
  name_ = name;
  icon_ = PictureNamed(name);
  repaint();
}

void PictureView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  icon_.paint(&painter, rect());
}

}  // namespace platform
