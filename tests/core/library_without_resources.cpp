extern "C" const char *SomethingElse() { return "no resources here"; }
