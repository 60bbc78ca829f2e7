#pragma once

#include "catalogue/PointerFile.h"
#include "session/NewsSession.h"

// Each news server has three files of its own beside the program: a prefix and the server's name.
namespace ServerFiles {

inline constexpr const char* groupPrefix = "!@#!.";
inline constexpr const char* selectedPrefix = "#!@!.";
inline constexpr const char* pointerPrefix = "@!!#.";

// That of the current server.
inline std::string Current(const char* prefix, const frmTamarack& MainForm, const NewsSession& Session)
{
    return Session.AppDir + prefix + MainForm.cboNewsServer.Text();
}

inline PointerFile CurrentPointers(const frmTamarack& MainForm, const NewsSession& Session)
{
    return PointerFile(Current(pointerPrefix, MainForm, Session));
}

}
