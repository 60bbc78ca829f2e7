#include "decoder/AttachmentSink.h"

AttachmentWriter::AttachmentWriter(AttachmentSink& attachmentSink, std::string_view name)
    : sink(attachmentSink)
{
    sink.Open(name);
}

AttachmentWriter::AttachmentWriter(AttachmentSink& attachmentSink, std::string_view name, const PartPlace& place)
    : sink(attachmentSink)
{
    sink.OpenPart(name, place);
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

Outcome AttachmentWriter::Keep()
{
    Flush();
    isOpen = false;
    return sink.Keep() ? Outcome::Stored : Outcome::NotWritten;
}

Outcome AttachmentWriter::KeepPart(const PartEnd& end)
{
    Flush();
    isOpen = false;
    return sink.KeepPart(end);
}
