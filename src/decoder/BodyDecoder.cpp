#include "decoder/BodyDecoder.h"

#include "decoder/Base64.h"
#include "decoder/MimeBoundaries.h"
#include "decoder/MimePart.h"
#include "decoder/Uuencode.h"
#include "decoder/Yenc.h"

#include <algorithm>
#include <string>

// A body is text in which attachments may begin at any line. An attachment that breaks off leaves the line at which it
// did so to be looked at again, since the next attachment may begin there.

namespace {

class BodyDecoder {
public:
    BodyDecoder(LineReader& lineReader, AttachmentSink& attachmentSink)
        : lines(lineReader)
        , sink(&attachmentSink)
    {
    }

    Outcome Decode()
    {
        std::size_t attachments = 0;
        Outcome worst = Outcome::Stored;
        bool found = false;
        while (lines.HasLine() && attachments <= mostAttachments) {
            if (attachments == mostAttachments)
                sink = &nowhere;
            const Outcome outcome = TakeLine();
            if (outcome == Outcome::None)
                continue;
            found = true;
            attachments += outcome == Outcome::Part ? 0 : 1;
            worst = std::min(worst, attachments > mostAttachments ? Outcome::Damaged : outcome);
        }
        return found ? worst : Outcome::None;
    }

private:
    // Passes the current line, and the attachment that begins with it.
    Outcome TakeLine()
    {
        const std::string_view line = lines.Line();
        const bool isFullLine = lines.IsWhole() && IsFullUuencodeLine(line);
        fullLines = isFullLine ? fullLines + 1 : 0;
        if (lines.IsWhole() && !line.empty()) {
            switch (line.front()) {
            case 'b':
                return TakeBeginLine(line);
            case '=':
                return TakeYencLine(line);
            case '-':
                return TakeBoundaryLine(line);
            default:
                break;
            }
        }
        lines.Advance();
        // Lines of uuencode outside an attachment are the middle of one whose begin is in another article.
        return fullLines == fewestFullLines ? Outcome::Part : Outcome::None;
    }

    Outcome TakeBeginLine(std::string_view line)
    {
        const auto name = NameInBeginLine(line, "begin");
        const auto base64Name = NameInBeginLine(line, "begin-base64");
        lines.Advance();
        if (name)
            return DecodeUuencode(lines, *name, boundaries, *sink);
        return base64Name ? DecodeBeginBase64(lines, *base64Name, boundaries, *sink) : Outcome::None;
    }

    Outcome TakeYencLine(std::string_view line)
    {
        const auto begin = ReadYencBegin(line);
        lines.Advance();
        return begin ? DecodeYenc(lines, *begin, *sink) : Outcome::None;
    }

    Outcome TakeBoundaryLine(std::string_view line)
    {
        bool partFollows = false;
        if (boundaries.EndsPart(line)) {
            partFollows = boundaries.Pass(line);
            lines.Advance();
        } else if (MimeBoundaries::LooksLikeBoundary(line)) {
            const std::string boundary(line);
            lines.Advance();
            partFollows = lines.HasLine() && IsContentHeader(lines.Line());
            if (partFollows)
                boundaries.Enter(boundary);
        } else {
            lines.Advance();
        }
        if (!partFollows)
            return Outcome::None;
        const MimePart part = ReadMimePart(lines, boundaries);
        return part.isBase64 && !part.name.empty() ? DecodeBase64Part(lines, part.name, boundaries, *sink)
                                                   : Outcome::None;
    }

    // In a row, so many are no prose.
    static constexpr int fewestFullLines = 3;

    LineReader& lines;
    AttachmentSink nowhere; // for an attachment that is one too many
    AttachmentSink* sink;
    MimeBoundaries boundaries;
    int fullLines = 0;
};

}

Outcome DecodeBody(LineReader& lines, AttachmentSink& sink) { return BodyDecoder(lines, sink).Decode(); }
