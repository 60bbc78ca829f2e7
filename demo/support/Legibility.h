#pragma once

class QImage;
class QWidget;

// Tells on the output where, in the picture of a window, a text is cut off or has a contrast of less than 4.5 to 1
// (WCAG 2.1, 1.4.3), which of its controls the Tab key does not lead to, and which do not show that they have the
// focus. What is disabled does not count.
void TellWhatIsHardToSee(QWidget& window, const QImage& picture);
