/* karil: the version of these headers. The build takes its number from here. */
#ifndef KARIL_VERSION_H
#define KARIL_VERSION_H

#define KARIL_VERSION_MAJOR 1
#define KARIL_VERSION_MINOR 0
#define KARIL_VERSION_PATCH 0
#define KARIL_VERSION "1.0.0"

#endif
