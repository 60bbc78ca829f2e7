#include "decoder/AttachmentDecoder.h"

#include "base/Descriptor.h"
#include "decoder/AttachmentStore.h"
#include "decoder/BodyDecoder.h"
#include "decoder/LineReader.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>

void AttachmentDecoder::SetDecodeFilename(const std::string& path)
{
    Descriptor input(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat found { };
    if (!input.IsOpen() || fstat(input.Number(), &found) != 0 || !S_ISREG(found.st_mode))
        (void)input.Close();
    // A file that can be read no further ends there.
    LineReader lines([&input](char* to, std::size_t size) {
        return static_cast<std::size_t>(std::max<ssize_t>(input.Read(to, size), 0));
    });
    AttachmentStore store(path, ReservedNames, sets);
    const Outcome worst = DecodeBody(lines, store);
    store.FinishWholeSets();

    storedNames = store.Names();
    foundNames = store.FoundNames();
    status = storedNames.empty() ? static_cast<int>(worst) : static_cast<int>(storedNames.size());
}
