#include "plant/nc.h"
