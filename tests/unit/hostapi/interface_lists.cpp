#include "interface_lists.inc"
