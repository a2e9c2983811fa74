#include "support.h"
