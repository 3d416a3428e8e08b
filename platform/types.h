// The library's integer words, the export macro and the collection position, as hosts see them.
#pragma once

#include "vem_base.h"
