// Stands for the precompiled headers that every test program uses.
