#include "decoder/AttachmentSink.h"

AttachmentWriter::AttachmentWriter(
    AttachmentSink& attachmentSink, std::string_view name, const std::optional<AttachmentPart>& part)
    : sink(attachmentSink)
{
    sink.Open(name, part);
}

AttachmentWriter::~AttachmentWriter() { Abandon(); }

void AttachmentWriter::Abandon()
{
    if (isOpen)
        sink.Drop();
    isOpen = false;
}

void AttachmentWriter::Flush()
{
    if (isOpen && used != 0)
        sink.Write({buffer.get(), used});
    flushed += used;
    used = 0;
}

Outcome AttachmentWriter::Keep(const std::optional<AttachmentPart>& part)
{
    Flush();
    isOpen = false;
    return sink.Keep(part);
}
