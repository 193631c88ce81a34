#include "state/Records.h"
