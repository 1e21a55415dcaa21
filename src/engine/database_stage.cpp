#include "engine/ks_updater.h"
