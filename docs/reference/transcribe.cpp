// transcribe.cpp - examples of the reference manual: kelvofxds/transcribe.

#include <unistd.h>

#include "docs/reference/examples.h"

EXAMPLE(fxStream) {
    //! [fxStream]
    fxMemoryStream memory;
    fxStream& stream = memory;  // numbers go as the machine has them
    const int written[] = {3, 4};
    int read[2] = {0, 0};
    if (stream.putInts(written, 2) && stream.getInts(read, 2))
        std::printf("%d %d\n", read[0], read[1]);  // 3 4
    //! [fxStream]
}

EXAMPLE(fxMemoryStream) {
    //! [fxMemoryStream]
    fxStrSet towns;
    towns.add("Lima");
    const fxRef<fxMemoryStream> memory(new fxMemoryStream);  // a transcriber drops it in the end
    const fxRef<fxTranscriber> writer(fxTranscriber::getWriter(memory.get()));
    writer->writeObject(&towns, &towns);
    std::printf("%u bytes, %u read\n", memory->length(), memory->position());  // 94 bytes, 0 read
    //! [fxMemoryStream]
}

EXAMPLE(fxStdioStream) {
    char path[] = "/tmp/stream.XXXXXX";
    ::close(::mkstemp(path));
    //! [fxStdioStream]
    const fxRef<fxStdioStream> file(fxStdioStream::createFile(path));
    file->putBytes("hello", 5);
    std::printf("%d\n", file->close());  // 1
    char bytes[5];
    fxStdioStream again(path, fxStream::readStream);
    if (again.getBytes(bytes, 5))
        std::printf("%.5s\n", bytes);  // hello
    //! [fxStdioStream]
    ::unlink(path);
}

EXAMPLE(fxTranscriber) {
    //! [fxTranscriber]
    fxStrSet towns;
    towns.add("Lima");
    const fxRef<fxMemoryStream> memory(new fxMemoryStream);
    const fxRef<fxTranscriber> writer(fxTranscriber::getWriter(memory.get()));
    std::printf("%d\n", writer->writeObject(&towns, &towns));  // 1
    const fxRef<fxTranscriber> reader(fxTranscriber::getReader(memory.get()));
    auto* copy = static_cast<fxStrSet*>(reader->readObject(fxStrSet_type));
    std::printf("%d\n", copy->contains("Lima"));  // 1
    delete copy;
    //! [fxTranscriber]
}

EXAMPLE(fxGraphWriter) {
    //! [fxGraphWriter]
    fxStrSet towns;
    towns.add("Lima");
    fxTranscriber::changeDefaultWriter(makeGraphWriter);
    const fxRef<fxMemoryStream> memory(new fxMemoryStream);
    const fxRef<fxTranscriber> writer(fxTranscriber::getWriter(memory.get()));
    std::printf("%d\n", writer->writeObject(&towns, &towns));  // 1
    //! [fxGraphWriter]
    fxTranscriber::resetToDefaultWriter();
}

EXAMPLE(fxGraphReader) {
    fxStrSet towns;
    const fxRef<fxMemoryStream> whole(new fxMemoryStream);
    fxTranscriber::changeDefaultWriter(makeGraphWriter);
    const fxRef<fxTranscriber> writer(fxTranscriber::getWriter(whole.get()));
    writer->writeObject(&towns, &towns);
    fxTranscriber::resetToDefaultWriter();
    const fxRef<fxMemoryStream> stream(new fxMemoryStream(whole->getBase(), whole->length() - 1));
    //! [fxGraphReader]
    // `stream` holds a set, but its last byte is missing.
    const fxRef<fxTranscriber> reader(fxTranscriber::getReader(stream.get()));
    void* root = reader->readObject(fxStrSet_type);
    if (const fxGraphReader* graphs = fxGraphReader::of(*reader); graphs && !root)
        std::printf("%s\n", graphs->lastError());  // offset 65, record 3: the stream ends here
    //! [fxGraphReader]
}

EXAMPLE(fxBinaryTranscriber) {
    //! [fxBinaryTranscriber]
    fxBinaryWriter writer(new fxMemoryStream);
    fxBinaryTranscriber& standard = writer;             // what writer and reader have in common
    std::printf("%u\n", standard.getTable().length());  // 1
    //! [fxBinaryTranscriber]
}

EXAMPLE(fxBinaryWriter) {
    //! [fxBinaryWriter]
    fxStrSet towns;
    const fxRef<fxMemoryStream> memory(new fxMemoryStream);
    const fxRef<fxTranscriber> writer(fxTranscriber::getWriter(memory.get()));
    std::printf("%s\n", writer->className());                  // fxBinaryWriter
    std::printf("%d\n", writer->writeObject(&towns, &towns));  // 1
    //! [fxBinaryWriter]
}

EXAMPLE(fxBinaryReader) {
    fxStrSet towns;
    towns.add("Lima");
    const fxRef<fxMemoryStream> stream(new fxMemoryStream);
    const fxRef<fxTranscriber> writer(fxTranscriber::getWriter(stream.get()));
    writer->writeObject(&towns, &towns);
    //! [fxBinaryReader]
    // `stream` holds a set that the standard writer has written.
    const fxRef<fxTranscriber> reader(fxTranscriber::getReader(stream.get()));
    auto* copy = static_cast<fxStrSet*>(reader->readObject(fxStrSet_type));
    std::printf("%s: %u\n", reader->className(), copy->length());  // fxBinaryReader: 1
    delete copy;
    //! [fxBinaryReader]
}

EXAMPLE(fxBinaryWriterItem) {
    //! [fxBinaryWriterItem]
    fxBinaryWriter writer(new fxMemoryStream);
    char block[] = "text";  // to be written when the object that points to it is
    writer.queue(new fxBinaryWriterItem{1, block, sizeof block, fxOT_Bytes});
    std::printf("%d\n", writer.alreadyWritten(block) != 0);  // 1
    //! [fxBinaryWriterItem]
}

EXAMPLE(fxBinaryReaderItem) {
    //! [fxBinaryReaderItem]
    void* member = nullptr;
    const fxBinaryReaderItem item = {&member, 7, fxBinaryReaderItem::objectTarget};
    std::printf("record %u\n", item.number);  // record 7
    //! [fxBinaryReaderItem]
}

EXAMPLE(fxBinaryOTDict) {
    //! [fxBinaryOTDict]
    fxBinaryOTDict numbers;  // of words by words
    unsigned int key = 0x1000;
    numbers.addNew(key, 7);
    std::printf("%u\n", *static_cast<unsigned int*>(numbers.find(&key)));  // 7
    //! [fxBinaryOTDict]
}

EXAMPLE(fxBinaryOTDictIter) {
    //! [fxBinaryOTDictIter]
    fxBinaryOTDict numbers;
    numbers.addNew(0x1000, 7);
    for (fxBinaryOTDictIter it(numbers); it.getKey(); ++it)
        std::printf("%u\n", *static_cast<unsigned int*>(it.getValue()));  // 7
    //! [fxBinaryOTDictIter]
}

//! [fxXdrAccess]
class Town : public fxXDRObj {
    FX_XDR_MEMBERS(Town)  // declares what fxXdrAccess looks for
    fxStr name;
};
FX_DEFINE_XDR(Town, "Town", 1)
unsigned char Town::xdr(fxTranscriber& t) { return name.xdr(t); }
//! [fxXdrAccess]

EXAMPLE(fxXdrAccess) {
    std::printf("%d\n", fxXdrAccess::hasMembers<Town>());      // 1
    std::printf("%d\n", fxXdrAccess::hasMembers<fxXDRObj>());  // 0
}
