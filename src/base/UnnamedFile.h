#pragma once

#include "base/Descriptor.h"

#include <string>

// A new file that is still being written. It lies hidden in the directory where it will have its name, and is locked
// (flock(2)), which tells it from what killed programs have left. Without a name it goes with the object.
class UnnamedFile {
public:
    // None.
    UnnamedFile() = default;

    // `directory` is empty or ends in a "/".
    explicit UnnamedFile(const std::string& directory);

    // One that is there already, on the same disk, open for reading and writing.
    UnnamedFile(std::string existing, Descriptor opened);
    ~UnnamedFile();
    UnnamedFile& operator=(UnnamedFile&& other) noexcept;

    // False for none, and where the file could not be made.
    bool IsOpen() const { return !path.empty(); }

    // Empty once it has its name.
    const std::string& Path() const { return path; }

    [[nodiscard]] std::error_code Write(std::string_view bytes) { return file.Write(bytes); }

    // The file itself, from its start: on some shares nobody else can read what is locked, not even this process.
    const Descriptor& FromStart() const;

    // Nothing more will be written. Brings it to the disk: what has its name is whole, also after the power went.
    [[nodiscard]] std::error_code Finish();

    // Gives it its name: std::errc::file_exists if that is taken.
    [[nodiscard]] std::error_code TakeName(const std::string& name);

    // Goes with the object no longer, or has another name by now.
    void Leave() { path.clear(); }

private:
    std::string path;
    Descriptor file; // closed by Finish
    Descriptor holder; // has the lock when that is closed
};

// Is this open file still the one of that name? Whoever waited for its lock may have one that was removed meanwhile.
bool HasName(const Descriptor& file, const std::string& path);

// Removes from a directory the files that programs had in hand when they died: those that nobody holds a lock on. Where
// the disk knows no locks they all stay.
void RemoveRemains(const std::string& directory);
