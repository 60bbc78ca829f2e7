#pragma once

class QAbstractItemView;
class QHelpEvent;
class QModelIndex;

// For a list's delegate, when a tool tip is asked for: shows the whole text of a row that is wider than its list, and
// nothing, with false, for one that fits. `width` is that of the row's text, in pixels.
bool ShowRowTip(const QHelpEvent& event, QAbstractItemView& list, const QModelIndex& row, int width);
