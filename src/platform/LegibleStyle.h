#pragma once

class QStyle;

// The style of the desktop, but for what that leaves hard to see:
// - A list or text area with the keyboard focus shows so, and under Adwaita a small button, too. A panel draws its own
//   edge.
// - A hint keeps two thirds of the text's colour. The toolkit leaves it half, too little to read, and where the desktop
//   gives colours of its own, half of black, also on a black ground.
// - The rows of a list without the focus are as plain as the rest of the window.
// - A caption that is too long for the margins of its button's style may take those, too.
// - On a black ground, of high contrast, edges and what is disabled are not black, too.
//
// For platform/ alone.
QStyle* MakeLegibleStyle();
