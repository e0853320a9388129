"""What scripts/mutate is made of, one idea a file."""
