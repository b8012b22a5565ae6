#include "appenders/LOGWriter.h"

LOGWriter::~LOGWriter() = default;
