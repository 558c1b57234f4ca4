// Anchors the moc output of the contract classes in the shared contract library.
#include "collectview.h"
