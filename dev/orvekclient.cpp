#include "orvekclient.h"
