"""What the scripts have in common."""
