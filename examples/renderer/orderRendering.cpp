// The library that loaded.xml names: it gives the renderer to whatever program reads the document.

#include "OrderRenderer.h"
#include "platform/LOG4ZEBExport.h"

extern "C" LOG4ZEB_LIBRARY_EXPORT LOGObjectRenderer* getRenderer() { return new OrderRenderer; }
