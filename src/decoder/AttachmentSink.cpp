#include "decoder/AttachmentSink.h"

AttachmentWriter::AttachmentWriter(AttachmentSink& attachmentSink, std::string_view name)
    : sink(attachmentSink)
{
    sink.Open(name);
}

AttachmentWriter::~AttachmentWriter()
{
    if (!kept)
        sink.Drop();
}

void AttachmentWriter::Flush()
{
    if (used != 0)
        sink.Write({buffer.get(), used});
    flushed += used;
    used = 0;
}

Outcome AttachmentWriter::Keep()
{
    Flush();
    kept = true;
    return sink.Keep() ? Outcome::Stored : Outcome::NotWritten;
}
