#pragma once

#include <QPixmap>
#include <QProgressBar>

namespace platform {

// The style's progress bar, drawn by the style twice only, empty and full: each painting shows the
// two side by side. A style takes a quarter of a millisecond for its gradients and round corners,
// too much for a bar that moves thirty times a second.
class ProgressBar final : public QProgressBar {
 public:
  explicit ProgressBar(QWidget* parent);

 protected:
  void paintEvent(QPaintEvent* event) override;
  // Another style, font, palette or activity looks different.
  void changeEvent(QEvent* event) override;

 private:
  QPixmap Draw(int value) const;
  void DrawBoth();

  QPixmap empty_;
  QPixmap full_;
};

}  // namespace platform
