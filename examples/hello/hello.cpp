#include <kelvofxds/kelvofxds.h>

int main() {
    fxInitializeToolkit();
    fxStrStrDictionary capitals;
    capitals.add("Peru", "Lima");
    auto* writer = fxTranscriber::getWriter(new fxStdioStream("capitals", fxStream::writeStream));
    writer->writeObject(&capitals, &capitals);
    delete writer;  // and with it the stream
    auto* reader = fxTranscriber::getReader(new fxStdioStream("capitals", fxStream::readStream));
    auto* copy = static_cast<fxStrStrDictionary*>(reader->readObject(fxStrStrDictionary_type));
    std::printf("The capital of Peru is %s.\n", copy->find("Peru")->c_str());
    delete copy;
    delete reader;
}
