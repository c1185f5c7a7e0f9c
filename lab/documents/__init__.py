"""Generators of the screenshots and the sample report in docs/, taken from the running program in a lab."""
