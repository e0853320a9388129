"""What scripts/coverage does."""
