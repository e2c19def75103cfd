// Replaced by the subsystem's first source file.
