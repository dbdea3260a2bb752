// The one set of file-unit settings of the process.
#include "runtime/settings.hpp"

FileUnitSettings fileUnitSettings;
