# Doxygen's view of a header. There one block describes all members of an operation; here the block becomes the
# description of the first member, which Doxygen then repeats for the others, so that each is checked and found by
# search:
#
#     /**                          /** @name Title */
#      * @name Title               /** @{ */
#      * Text.            ->       /** @brief Title
#      */                           * Text.
#     /** @{ */                      */
/^\/\*\*$/ { opening = 1; next }
opening && /^ \* @name / {
    title = substr($0, 10)
    print "/** @name " title " */"
    print "/** @{ */"
    print "/** @brief " title
    opening = 0
    moved = 1
    next
}
opening { print "/**"; opening = 0 }
moved && /^\/\*\* @\{ \*\/$/ { moved = 0; next }
{ print }
