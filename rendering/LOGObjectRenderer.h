#ifndef RENDERING_LOGOBJECTRENDERER_H
#define RENDERING_LOGOBJECTRENDERER_H

#include "platform/I18NString.h"

class LOGObject;
class LOGRecordStream;

/// Turns message objects of one class into text, and into records that a Java program reads. The
/// operations are called by the threads that log, by several at once.
class LOG4ZEB_EXPORT LOGObjectRenderer {
 public:
  virtual ~LOGObjectRenderer();
  /// The text in a new string that the caller deletes, or null.
  virtual I18NString* doRender(LOGObject* object) = 0;
  /// Writes the description of the class that a record's object belongs to, from its first byte
  /// 0x72 up to the end of its annotations. Here it is an externalizable class LOGObject with the
  /// version number 1.
  virtual void writeClassDesc(LOGRecordStream& stream);
  /// Writes the object's content, which the class described reads. Here it is the text of
  /// doRender(), or what the log call has rendered, cut between two characters when the record
  /// cannot hold it; the empty text for null.
  virtual void writeObject(LOGObject* object, LOGRecordStream& stream);
};

#endif
