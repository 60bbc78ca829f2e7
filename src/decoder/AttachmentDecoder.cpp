#include "decoder/AttachmentDecoder.h"

#include "decoder/AttachmentStore.h"
#include "decoder/BodyDecoder.h"
#include "decoder/LineReader.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A regular file open for reading, or none.
class InputFile {
public:
    explicit InputFile(const std::string& path)
        : file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC))
    {
        struct stat found = {};
        isReadable = file >= 0 && fstat(file, &found) == 0 && S_ISREG(found.st_mode);
    }
    ~InputFile()
    {
        if (file >= 0)
            close(file);
    }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    // The number of bytes read, 0 at the end. A file that can be read no further ends there.
    std::size_t Read(char* to, std::size_t size)
    {
        ssize_t count = -1;
        errno = 0;
        while (isReadable && (count = read(file, to, size)) < 0 && errno == EINTR) { }
        return count > 0 ? static_cast<std::size_t>(count) : 0;
    }

private:
    int file = -1;
    bool isReadable = false;
};

}

void AttachmentDecoder::SetDecodeFilename(const std::string& path)
{
    InputFile input(path);
    LineReader lines([&input](char* to, std::size_t size) { return input.Read(to, size); });
    AttachmentStore store(path.substr(0, path.rfind('/') + 1), path);
    const Outcome worst = DecodeBody(lines, store);

    storedNames = store.Names();
    foundNames = store.FoundNames();
    imageFilename = storedNames.empty() ? std::string() : storedNames.front();
    status = storedNames.empty() ? static_cast<int>(worst) : static_cast<int>(storedNames.size());
}
