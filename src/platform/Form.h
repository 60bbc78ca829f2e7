#pragma once

#include "platform/Control.h"
#include "platform/MouseEvents.h"

#include <memory>

class CommandButton;
class QMenuBar;

enum class BorderStyle { Fixed, Sizable, None };

// A window of its own. Its controls are members of a class derived from it; their places count from the corner of the
// client area, below the menu bar. Beyond what a window does, it stays alive when its user closes it and raises
// `Unload` instead: what happens then is for the form's behaviour to say.
class Form : public Container, public MouseEvents {
public:
    // `Width` and `Height` count the borders, the title and the menu bar of the original design, this much more than
    // the client area, whatever the desktop puts around a window.
    static constexpr double designedBorders = 120;
    static constexpr double designedTitle = 375;
    static constexpr double designedMenuBar = 285;

    struct Design {
        double clientWidth;
        double clientHeight;
        BorderStyle border = BorderStyle::Fixed;
    };

    Form(std::string_view name, std::string_view caption, const Design& design);
    virtual ~Form();

    void SetCaption(std::string_view caption);

    // In twips, on the screen, of the whole window; as they were before while it is hidden, minimised or maximised.
    double Left() const;
    double Top() const;
    double Width() const;
    double Height() const;
    void SetLeft(double left);
    void SetTop(double top);
    void SetWidth(double width);
    void SetHeight(double height);

    // The client area, in twips.
    double ScaleWidth() const;
    double ScaleHeight() const;

    // Neither minimised nor maximised.
    bool IsNormal() const;

    // A window that was hidden comes back where it was, neither minimised nor maximised.
    bool Visible() const;
    void SetVisible(bool visible);

    // Shows the form and returns when it is hidden again; meanwhile no other form takes input.
    void ShowModal();

    // Puts the middle of the window, its frame counted in, to the middle of the screen, or of another window if that is
    // on it; as near to it as keeps the whole window on the screen.
    void CentreOnScreen();
    void CentreOnForm(const Form& other);

    // Enter presses the first from every control that does not want the key for itself and is no button, and Escape the
    // second.
    void SetDialogButtons(CommandButton& accept, CommandButton& cancel);

    // Escape closes the window, as its close button does.
    void ClosesWithEscape();

    // A key sequence such as "Ctrl+C", anywhere in the window where no field takes it for itself.
    void OnKeys(std::string_view keys, std::function<void()> pressed);

    // Shows the form in front of the other windows; over a modal one too, and usable there.
    void BringToFront();

    // A modal form or message box is up: other windows take no clicks and keys.
    static bool HasModalWindow();

    // Marks the window in the desktop's list of windows until its user comes back to it.
    void AskForAttention();

    void SetMousePointer(MousePointer pointer);

    // The user asked for the window to be closed, or the desktop session ends.
    std::function<void()> Unload;
    std::function<void()> Resize;
    // Shows a topic of the help. The F1 key in any window raises it with that of the control that has the focus, or
    // else of what it lies in; 0 if there is none.
    static std::function<void(int topic)> HelpKey;

private:
    friend class Menu;
    class Window;

    QMenuBar& MenuBar();
    double Chrome() const;
    void SetSize(double width, double height);
    void Layout();

    std::unique_ptr<Window> window;
    QMenuBar* menuBar = nullptr;
    bool closesWithEscape = false;
    Design design; // of which the client area follows SetWidth and SetHeight
};
