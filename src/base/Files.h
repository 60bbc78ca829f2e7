#pragma once

#include "base/Descriptor.h"

#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

// Files as the logic uses them. Paths are bytes. Nothing here throws.

// True if a plain file of that name is there.
bool FileExists(const std::string& path);

// True if the path names a directory, or a plain file.
bool DirExists(const std::string& path);

// True if both paths lead to the same directory or file, by whatever name.
bool SameFile(const std::string& one, const std::string& other);

// Written beside its final name, down to the disk, and renamed over it, so that a crash, a full disk or a loss of power
// leaves the old file or the new one.
[[nodiscard]] std::error_code ReplaceFile(const std::string& path, std::initializer_list<std::string_view> contents);

// A new file with this content, in place of what was there, a link included.
[[nodiscard]] std::error_code WriteFile(const std::string& path, std::string_view content, std::string_view more = {});

// Writes behind the end of a file, which is made if it is not there, and is for its owner alone from then on.
[[nodiscard]] std::error_code AppendToFile(const std::string& path, std::string_view text);

[[nodiscard]] std::error_code DeleteFile(const std::string& path);

// Both replace a file of the new name, in one step; also from one disk to another.
[[nodiscard]] std::error_code MoveFile(const std::string& from, const std::string& to);
[[nodiscard]] std::error_code CopyFile(const std::string& from, const std::string& to);

// Gives a file another name on the same disk: std::errc::file_exists if that is taken.
[[nodiscard]] std::error_code RenameUnlessTaken(const std::string& from, const std::string& to);

// std::errc::file_exists if there is something of that name, std::errc::no_such_file_or_directory if the path that
// leads to it does not exist.
[[nodiscard]] std::error_code MakeDirectory(const std::string& path);

// What stands behind the last separator.
std::string_view BareName(std::string_view path);

// What stands before that, the separator included.
std::string DirectoryOf(const std::string& path);

// With a separator at its end, one more if there is none.
std::string WithSeparator(std::string path);

// The current directory, and that of the program's file. A separator stands at their ends.
std::string CurrentDirectory();
std::string ExecutableDirectory();

enum class EntryKind { Directory, File };

// The names of the directories, or of the plain files, in a directory, links to such included and hidden ones left out;
// sorted regardless of ASCII case. None if the directory cannot be read.
std::optional<std::vector<std::string>> NamesIn(const std::string& directory, EntryKind kind);

// Reads a text file by fields, as a spreadsheet's lines. A file that can be read no further ends there.
class SequentialInput {
public:
    explicit SequentialInput(const std::string& path);

    bool IsOpen() const { return open; }
    // False if there is more than could be read, or something that cannot be read at all.
    bool IsWhole() const { return whole; }
    std::size_t Length() const { return content.size(); }
    bool AtEnd() const { return position >= content.size(); }

    // Leading blanks are skipped; a field ends at a comma or a line end. It is valid as long as the object is.
    std::string_view ReadField();

    // The same, but a field that begins with a double quote ends at the next one, commas and line ends being part of
    // it.
    std::string_view ReadQuotedField();

private:
    void SkipBlanks();
    void EndField();

    std::string content;
    std::size_t position = 0;
    bool open = false;
    bool whole = true;
};

// A mark that one process holds at a time, as long as the object lives; a process that dies lets go of it. The file
// stays.
class LockFile {
public:
    explicit LockFile(const std::string& path);

    // Where the file cannot be made, or the disk knows no locks, nobody is known to hold it.
    bool HeldByAnother() const { return heldByAnother; }

    // The file is another user's and cannot be opened: whether anybody holds it cannot be told.
    bool OfAnotherUser() const { return ofAnotherUser; }

    // A path that the holder has in hand, "" for none. Whoever holds the mark after a process that died finds its note.
    void SetNote(const std::string& path);
    std::string Note() const;

private:
    Descriptor file;
    bool ofAnotherUser = false;
    bool heldByAnother = false;
};
