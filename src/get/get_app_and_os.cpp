#include "control/QuillportControl.h"
