#pragma once

#include <cerrno>
#include <string>
#include <system_error>

#include "platform/wording.h"

namespace kelpin::platform {

// Why the system refused something that has to do with a file or a folder, and what to do; `error`
// is a number of errno. Stands behind a colon, as in "FILE: cannot be opened: ".
inline std::string SystemTrouble(int error) {
  switch (error) {
    case ENOENT:
      return Say("it is not there, or a folder in its name is not. See that the name is right");
    case ENOTDIR:
      return Say("a part of its name is no folder. See that the name is right");
    case EISDIR:
      return Say("it is a folder. Name a file");
    case ELOOP:
      return Say("it is a link, which is not followed here. Put a file in its place");
    case ENAMETOOLONG:
      return Say("its name is too long. Choose a shorter one");
    case EEXIST:
      return Say("there is something of that name. Choose another one, or remove it");
    case EACCES:
    case EPERM:
      return Say("you have no right to. \"ls -l\" tells whose it is and who may use it");
    case EROFS:
      return Say("the disk is read-only. Choose a place on another one");
    case ENOSPC:
    case EDQUOT:
      return Say("the disk is full. Make room and try again");
    case EFBIG:
      return Say("files may not grow so large here. Raise the limit (\"ulimit -f\") and try again");
    case EMFILE:
    case ENFILE:
      return Say("too many files are open. End other programs and try again");
    case ENOMEM:
      return Say("there is no memory left. End other programs and try again");
    case EIO:
      return Say("the disk fails. Copy what is on it while it can be read");
    default:
      return Say("the system says \"%s\". Try again", {std::generic_category().message(error)});
  }
}

}  // namespace kelpin::platform
