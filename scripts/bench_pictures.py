def draw(results): pass
