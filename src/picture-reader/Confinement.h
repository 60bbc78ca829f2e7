#pragma once

// Takes from this process what reading pictures does not need, step by step. None of it can be undone. What each step
// leaves is in docs/robustness.md.

enum class Files { None, OnlyFonts };

// Nothing of what this process inherited is of use to it: its environment, its descriptors beside those of the
// protocol. Ends with the process that started it, and is never written to the disk when it dies.
[[nodiscard]] bool LetGo();

// Bounds its memory, and keeps it from making files larger.
[[nodiscard]] bool LimitMemory();

// From here on only what lies where fonts are can be opened. True also on a kernel that cannot do it (before 5.13, or
// without Landlock); false if it should and does not.
[[nodiscard]] bool ConfineToFonts();

// From here on a system call that reading pictures does not need fails: no file can be opened, or only for reading; no
// socket, no program, no process.
[[nodiscard]] bool FilterCalls(Files files);
