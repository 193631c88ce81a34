#include "model/Records.h"
