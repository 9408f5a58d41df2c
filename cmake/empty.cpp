// A target that consists only of the libraries it links still needs one source file.
