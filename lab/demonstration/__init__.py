"""What the program does, shown on real input in a lab."""
