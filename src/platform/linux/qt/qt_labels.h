#pragma once

#include <QIcon>
#include <QLabel>
#include <QStringList>
#include <QWidget>
#include <string>

namespace platform {

// Lines of the given width in pixels; a word is broken where it must be.
QStringList BreakLines(const QString& text, const QFont& font, int width);

// A text of one or several lines in a place of fixed height: what is too long loses its middle, so
// that both ends of a path can be read. The tool tip and assistive programs get all of it.
class FixedLabel final : public QLabel {
 public:
  FixedLabel(int lines, QWidget* parent);

  // Painted before it returns.
  void SetText(const std::string& text);

 protected:
  void paintEvent(QPaintEvent* event) override;
  QSize minimumSizeHint() const override;
  QSize sizeHint() const override { return minimumSizeHint(); }

 private:
  int lines_;
};

// A picture of 48 by 48 logical pixels, drawn from the size that suits the screen.
class PictureView final : public QWidget {
 public:
  explicit PictureView(QWidget* parent);

  // Painted before it returns; empty: no picture.
  void SetPicture(const std::string& name);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  std::string name_;
  QIcon icon_;
};

}  // namespace platform
