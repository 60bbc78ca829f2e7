#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

// The formats of picture files that are read.
enum class PictureFormat : std::uint32_t { None, Jpeg, Gif, Png, Bmp, Icon, WebP, Tiff, Wmf, Emf };

// How many bytes from the start of a file FormatOf wants to see; a file may have fewer.
constexpr std::size_t formatHeadLength = 44;

// The format that these bytes begin as, None if it is none of those.
PictureFormat FormatOf(std::string_view head);

// Are its files Windows metafiles, which are drawn rather than decoded, and may need fonts for that?
constexpr bool IsMetafile(PictureFormat format) { return format == PictureFormat::Wmf || format == PictureFormat::Emf; }
