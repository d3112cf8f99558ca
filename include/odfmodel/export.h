#pragma once

/// Marks what the shared library offers; everything else stays hidden inside it.
#if defined(_WIN32)
#if defined(ODFMODEL_BUILDING)
#define ODFMODEL_API __declspec(dllexport)
#else
#define ODFMODEL_API __declspec(dllimport)
#endif
#else
#define ODFMODEL_API __attribute__((visibility("default")))
#endif
