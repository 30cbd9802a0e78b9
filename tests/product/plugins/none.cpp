// A library that is no plug-in.
int something_else();
int something_else() { return 1; }
