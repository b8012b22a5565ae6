#include "platform/ZEBThreadRunnable.h"

ZEBThreadRunnable::~ZEBThreadRunnable() = default;
