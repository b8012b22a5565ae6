#include "rendering/LOGObjectRenderer.h"

#include <memory>

#include "rendering/LOGRecordStream.h"

// Flags of a class in Java's object serialisation.
constexpr int SC_EXTERNALIZABLE = 0x04;
constexpr int SC_BLOCK_DATA = 0x08;

constexpr const char* CLASS_NAME = "LOGObject";

LOGObjectRenderer::~LOGObjectRenderer() = default;

void LOGObjectRenderer::writeClassDesc(LOGRecordStream& stream) {
  stream.writeByte(LOGRecordStream::TC_CLASSDESC);
  stream.writeUTF(CLASS_NAME);
  stream.writeInt(0);  // the version number, a long
  stream.writeInt(1);
  stream.writeByte(SC_EXTERNALIZABLE | SC_BLOCK_DATA);
  stream.writeShort(0);  // fields
  stream.writeByte(LOGRecordStream::TC_ENDBLOCKDATA);
}

void LOGObjectRenderer::writeObject(LOGObject* object, LOGRecordStream& stream) {
  if (stream.renderedText() != nullptr) {
    stream.writeUTFCut(*stream.renderedText());
    return;
  }
  const std::unique_ptr<I18NString> text(doRender(object));
  stream.writeUTFCut(text == nullptr ? I18NString() : *text);
}
