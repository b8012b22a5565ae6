#include "core/LOGRepositorySelector.h"

LOGRepositorySelector::~LOGRepositorySelector() = default;
