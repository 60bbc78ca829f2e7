#include "decoder/MimeBoundaries.h"

#include "base/Text.h"

// The blanks that may follow a boundary are padding added on the way.

bool MimeBoundaries::LooksLikeBoundary(std::string_view line)
{
    line = TrimEnd(line);
    return line.starts_with("--") && line.size() > 2 && line.size() <= 2 + longestBoundary;
}

MimeBoundaries::Found MimeBoundaries::Find(std::string_view line) const
{
    if (!open.empty() && line.starts_with("--")) {
        line = TrimEnd(line).substr(2);
        for (std::size_t depth = open.size(); depth-- > 0;) {
            if (line.starts_with(open[depth])) {
                const std::string_view rest = line.substr(open[depth].size());
                if (rest.empty() || rest == "--")
                    return {depth, !rest.empty()};
            }
        }
    }
    return {open.size(), false};
}

bool MimeBoundaries::EndsPart(std::string_view line) const { return Find(line).depth != open.size(); }

bool MimeBoundaries::Pass(std::string_view line)
{
    const Found found = Find(line);
    open.resize(found.closes ? found.depth : found.depth + 1);
    return !found.closes;
}

void MimeBoundaries::Enter(std::string_view line)
{
    if (open.size() < deepestNesting)
        open.emplace_back(TrimEnd(line).substr(2));
}
