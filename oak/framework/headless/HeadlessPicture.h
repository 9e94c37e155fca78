// What a form looks like, in characters.
#pragma once

#include <functional>

#include "oak/base/Text.h"
#include "oak/framework/headless/CanvasHeadless.h"

namespace oak {

class TCustomForm;
class THeadlessDesktop;
class THeadlessWindow;

/// How a picture is made.
struct THeadlessPictureOptions {
  /// Open menus, dropped lists and hints that lie over the window are shown too.
  bool Popups = true;
  /// The sign that stands for an image of a list, one or two characters; empty: a small square.
  std::function<TString(const TDrawOperation& Image)> ImageSign;
};

/// The window as lines of text: words where they are drawn, boxes for frames with the caption in
/// the upper edge, "[...]" for low frames (edits, buttons), "[x]" for check boxes, "*" before what
/// is selected ("+" if it would be without the focus), "|" with "#" for scroll bars. Paints first
/// what is invalid. The same drawing gives the same text on every system. Lines end in U+000A and
/// have no blanks at their ends.
///
/// A cell is 7 pixels wide at 96 pixels per inch. Lines follow the drawing: what is drawn one below
/// the other never falls together, and gaps keep their proportion.
TString TextPicture(const TCustomForm& form, const THeadlessPictureOptions& options = {});
TString TextPicture(THeadlessDesktop& desktop, THeadlessWindow& window,
                    const THeadlessPictureOptions& options = {});

}  // namespace oak
