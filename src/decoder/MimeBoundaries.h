#pragma once

#include <string>
#include <string_view>
#include <vector>

// The boundaries of the MIME multiparts that are open at a place in a body, the outermost first.
class MimeBoundaries {
public:
    // RFC 2046, 5.1.1: one to seventy characters.
    static constexpr std::size_t longestBoundary = 70;

    // A multipart in a multipart in a multipart ... further ones are not entered.
    static constexpr std::size_t deepestNesting = 16;

    // Could this be a boundary line, "--" and a boundary, of a multipart that is not yet known?
    static bool LooksLikeBoundary(std::string_view line);

    // Does this line end the current part, whether another part follows ("--boundary") or not ("--boundary--")?
    bool EndsPart(std::string_view line) const;

    // Takes a line that ends the current part, and leaves the multiparts that it closes. True if another part follows.
    bool Pass(std::string_view line);

    // Enters the multipart whose first boundary line this is.
    void Enter(std::string_view line);

private:
    struct Found {
        std::size_t depth; // of `open`, the number of boundaries if none fits
        bool closes;
    };
    Found Find(std::string_view line) const;

    std::vector<std::string> open;
};
