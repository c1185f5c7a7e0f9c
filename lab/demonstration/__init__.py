"""Scenarios that show the program's features in a lab with simulated input."""
