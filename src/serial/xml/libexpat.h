#pragma once

// The library declares its bounds on entity expansion only to those who know that it was built with DTD
// support.
#ifndef XML_DTD
#define XML_DTD
#endif
#include <expat.h>
