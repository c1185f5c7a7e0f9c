"""What docs/ shows of the program, made by the program itself in a lab, so that it never goes stale."""
