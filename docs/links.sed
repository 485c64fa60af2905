# Doxygen's view of the texts: links to headers become its own, links into another text lead to its start.
s,](\([^)]*\.md\)#[^)]*),](\1),g
s,](\(\.\./\)\{0\,1\}include/\([^)/]*/\)*\([^)/]*\.h\)),](@ref \3),g
s,\[LICENSE\](LICENSE),LICENSE,g
