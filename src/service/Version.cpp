#include <tavrin/version.hpp>

extern "C" {
const unsigned char tavrinsdkVersionString[] = "@(#)PROGRAM:tavrinsdk  PROJECT:tavrinsdk-1\n";
const double tavrinsdkVersionNumber = 1.0;
}
