// Keeps a library target valid while its folder is still empty.
