#include "omcell/OmRegionManaged.h"

OmRegionManaged::~OmRegionManaged() = default;
