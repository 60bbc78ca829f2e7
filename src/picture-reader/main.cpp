// tamarack-picture [fonts]
//
// Reads pictures for the program, as Protocol.h tells. A library that reads pictures can be led astray by a malformed
// one. So all of them run here, where they may die or be killed without harm to anybody, and have no rights that would
// be worth having. With "fonts" it reads metafiles and nothing else, without it all the other formats.

#include "base/Descriptor.h"
#include "picture-reader/Confinement.h"
#include "picture-reader/MetafilePainting.h"
#include "picture-reader/Protocol.h"

#include <QFile>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// Gives the descriptor that came with the request, none if there was no request.
Descriptor Receive(PictureRequest& request)
{
    iovec part{&request, sizeof request};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    if (recvmsg(requestDescriptor, &message, MSG_CMSG_CLOEXEC) != sizeof request)
        return {};
    const cmsghdr* const header = CMSG_FIRSTHDR(&message);
    if (header == nullptr || header->cmsg_type != SCM_RIGHTS || header->cmsg_len != CMSG_LEN(sizeof(int)))
        return {};
    int descriptor = -1;
    std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
    return Descriptor(descriptor);
}

// Leaves the pixels in the shared memory.
PictureAnswer Read(const PictureRequest& request, int descriptor, bool metafiles, std::span<uchar> memory)
{
    const QSize most(static_cast<int>(request.maxWidth), static_cast<int>(request.maxHeight));
    const ReadPicture picture
        = metafiles ? ReadMetafile(descriptor, request.format, most) : ReadPixels(descriptor, request.format, most);
    if (picture.pixels.isNull())
        return {};
    const bool alpha = picture.pixels.hasAlphaChannel();
    const QImage pixels
        = picture.pixels.convertToFormat(alpha ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    const auto width = static_cast<std::uint32_t>(pixels.width());
    const auto height = static_cast<std::uint32_t>(pixels.height());
    if (pixels.isNull() || BytesFor(width, height) > memory.size())
        return {};
    for (std::uint32_t row = 0; row < height; ++row)
        std::memcpy(&memory[BytesFor(width, row)], pixels.constScanLine(static_cast<int>(row)), BytesFor(width, 1));
    return {static_cast<std::uint32_t>(picture.size.width()), static_cast<std::uint32_t>(picture.size.height()), width,
        height, alpha ? 1U : 0U};
}

bool Send(const PictureAnswer& answer) { return write(requestDescriptor, &answer, sizeof answer) == sizeof answer; }

}

int main(int argc, char** argv)
{
    const bool metafiles = argc == 2 && std::string_view(argv[1]) == "fonts";
    const bool freed = LetGo();
    QFile memory;
    uchar* const place = memory.open(pixelDescriptor, QIODevice::ReadWrite) ? memory.map(0, memory.size()) : nullptr;
    if (!freed || place == nullptr) {
        std::fputs("This program is started by Tamarack.\n", stderr);
        return EXIT_FAILURE;
    }
    if (metafiles && !LoadFonts())
        return EXIT_FAILURE;
    LoadReaders();
    if (!LimitMemory() || (metafiles && !ConfineToFonts()) || !FilterCalls(metafiles ? Files::OnlyFonts : Files::None)
        || !Send({}))
        return EXIT_FAILURE;

    for (;;) {
        PictureRequest request{};
        Descriptor file = Receive(request);
        if (!file.IsOpen())
            break;
        const PictureAnswer answer
            = Read(request, file.Number(), metafiles, {place, static_cast<std::size_t>(memory.size())});
        (void)file.Close(); // whoever has the answer may rely on that
        if (!Send(answer))
            break;
    }
    // Libraries that have read pictures have nothing left to say.
    _exit(EXIT_SUCCESS);
}
