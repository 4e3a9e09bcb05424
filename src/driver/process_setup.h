// What holds in the whole process before a build touches a file or a number.
#pragma once

namespace k2k {

// From here on the standard streams' descriptors are taken, a file that passes the system's size limit is an error of
// the write and no signal, and numbers have a decimal point whatever the user's locale is.
void SetUpProcess();

}  // namespace k2k
