// The library consists of the objects of pyrux_inside; a shared library target needs a source of its own.
