"""Small changes of the module's sources, and whether the tests see them."""
