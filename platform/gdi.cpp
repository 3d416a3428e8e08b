#include "platform/gdi.h"

CDC::~CDC() = default;
