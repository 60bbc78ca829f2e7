#include "pictures/PictureMenu.h"

#include "base/Files.h"
#include "platform/Clipboard.h"

void OfferPicture(Desktop& desktop, ImageControl& image, Panel& around, const std::function<std::string()>& path)
{
    const auto entries = [&desktop, &image, path]() -> std::vector<ContextEntry> {
        // As they are now: a search or a show goes on while the menu is open.
        const std::string file = path();
        const Bitmap picture = image.Picture();
        const auto open = [&desktop](const std::string& what) {
            return [&desktop, what] { (void)desktop.ShellOpen(AddressOfFile(what)); };
        };
        return {{"Open", open(file), FileExists(file)}, {"Open the directory", open(DirectoryOf(file)), !file.empty()},
            {"Copy picture", [picture] { picture.CopyToClipboard(); }, picture.Height() != 0},
            {"Copy file name", [file] { Clipboard::SetText(BareName(file)); }, !file.empty()}};
    };
    image.SetContextMenu(entries);
    around.SetContextMenu(entries);
    // One that was cleared has still its file's name.
    image.DraggedFile = [&image, path] { return image.Picture().Height() != 0 ? path() : std::string(); };
}
