#pragma once

#include <string>
#include <string_view>

// The characters that bytes stand for, which is what people see of them.

// Those of a text in UTF-8 (RFC 3629), or in Windows-1252 if it is not valid UTF-8.
std::u32string CharactersOf(std::string_view text);

void AppendUtf8(std::string& text, char32_t character);

// 0 for the five bytes that stand for nothing.
char32_t FromWindows1252(char byte);

// By Unicode's own data: what arranges others, or is not drawn. Blanks are.
bool ShowsAsNothing(char32_t character);

bool IsBlank(char32_t character);

// False if a text holds a control, a blank of any kind, or a character that shows as nothing. Bytes that are no valid
// UTF-8 are none of these.
bool IsVisibleThroughout(std::string_view text);
