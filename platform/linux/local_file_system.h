// Which file systems know every program that has one of their files open. On a share or behind a
// file system in user space the writer may be a program of another computer.
#pragma once

namespace ostrel {

/// True when the open file `descriptor` lies on a file system of this computer alone.
bool LiesOnLocalFileSystem(int descriptor);

/// True when files there may have second names: the file systems of cameras and sticks know none.
bool KnowsSecondNames(int descriptor);

}  // namespace ostrel
