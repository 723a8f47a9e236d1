// The parse-context routines: set-up switches, buffers, literal growth,
// multibyte measuring, escape decoding and keeping, number normalisation
// and classification, keyword lookup.
#include <gtest/gtest.h>

#include "vx_env.h"

namespace {

constexpr int32_t BAD = VXJSON_ERR_INVALID_JSON;

// The switches the escape mode and dialect imply; everything else cleared.
TEST(Context, InitSwitches) {
    struct Row {
        int32_t escape_mode, compat, want_escape, sorted, dup_replace, strict, scalar_top, last_key;
    };
    for (const Row &r : {Row{0, 0, 0, 0, 0, 0, 0, 0}, Row{1, 0, 1, 0, 0, 0, 0, 0},
                         Row{2, 0, 0, 1, 1, 0, 0, 0}, Row{0, 1, 0, 0, 0, 1, 1, 1},
                         Row{2, 2, 0, 1, 1, 1, 1, 1}}) {
        VxEnv env;
        jlpca_ctx *c = env.ctx.get();
        c->set_mode = 3;
        c->array_spare = 9;
        ASSERT_EQ(jlpca_init_simple(c, c, env.heap, &env.alloc, r.escape_mode, r.compat), 0);
        EXPECT_EQ((std::vector<int32_t>{c->escape_mode, c->sorted_keys, c->dup_key_replace,
                                        c->strict, c->scalar_top, c->path_last_key, c->compat,
                                        c->unique_keys, c->set_mode, int32_t(c->array_spare)}),
                  (std::vector<int32_t>{r.want_escape, r.sorted, r.dup_replace, r.strict,
                                        r.scalar_top, r.last_key, r.compat, 0, 0, 0}));
        EXPECT_EQ(c->env, c);
    }
    VxEnv env(unique(strict()));
    EXPECT_EQ(env.ctx->strict + env.ctx->unique_keys, 2);
}

TEST(Context, CharsetFromConfiguration) {
    for (auto [value, code] : {std::pair{0, 10}, {1, 1}, {2, 6}, {7, 0}}) {
        CharsetScope cs(value);
        VxEnv env;
        EXPECT_EQ(env.ctx->mb_charset, code) << value;
    }
}

// A new text clears the last one's nodes and error; a long one gets a
// buffer of its own, kept while later texts fit and dropped by a clear.
TEST(Context, ReinitClearsTheLastText) {
    VxEnv env;
    jlpca_ctx *c = env.ctx.get();
    const std::string big(5000, ' ');
    ASSERT_EQ(jlpca_reinit(c, big.data(), uint32_t(big.size())), 0);
    char *own = c->scan_buf;
    EXPECT_NE(own, c->scan_inline);
    c->first_node = c->cur_node = c->last_node = reinterpret_cast<json_node *>(8);
    c->err_code = -5;
    std::strcpy(c->err_msg, "x");
    c->err_line = c->err_aux = 4;
    ASSERT_EQ(jlpca_reinit_with_blank(c, "[1]", 3, 1), 0);
    EXPECT_EQ(c->scan_buf, own);
    EXPECT_EQ(c->blank, 1);
    EXPECT_EQ(c->first_node, nullptr);
    EXPECT_EQ(c->err_code, 0);
    EXPECT_STREQ(c->err_msg, "");
    EXPECT_EQ(c->err_aux, 0u);
    jlpca_clear(c);
    EXPECT_EQ(c->scan_buf, c->scan_inline);
}

// Pieces of a literal, across the inline buffer's end and into the heap.
TEST(Literal, GrowsIntoTheHeap) {
    for (const std::vector<uint32_t> &pieces : std::vector<std::vector<uint32_t>>{
             {32766}, {32767}, {20000, 12767}, {100000}, {1, 70000}}) {
        VxEnv env;
        jlpca_ctx *c = env.ctx.get();
        EXPECT_EQ(jlpca_startlit(c), c->lit_inline);
        std::string want;
        for (uint32_t n : pieces) {
            std::string piece(n, char('a' + want.size() % 26));
            ASSERT_EQ(jlpca_addlit(piece.data(), int32_t(n), c), 0);
            want += piece;
        }
        EXPECT_EQ(std::string(c->lit_buf, size_t(c->lit_len)), want);
        EXPECT_EQ(c->lit_buf[c->lit_len], '\0');
    }
    VxEnv env;
    jlpca_startlit(env.ctx.get());
    mem_heap_set_call_limit(env.heap, 0);
    EXPECT_EQ(jlpca_addlit(std::string(40000, 'z').data(), 40000, env.ctx.get()), VXJSON_ERR_NOMEM);
    EXPECT_EQ(env.ctx->lit_len, 0);
}

// Bytes of the last character beyond each piece, piece after piece.
TEST(Literal, MultibyteMeasuring) {
    struct Row {
        const char *id;
        int32_t charset;
        std::vector<std::string> pieces;
        std::vector<uint32_t> pending;
    };
    for (const Row &r :
         {Row{"gb_whole", GB, {"\xD6\xD0" "a"}, {0}},
          Row{"gb_lead_at_end", GB, {"a\x81", "\x5C", "b"}, {UINT32_MAX, 0, 0}},
          Row{"gb_lead_then_low_byte", GB, {"\x81", "\x30", "xy", "z"}, {UINT32_MAX, 2, 0, 0}},
          Row{"gb_four_byte_cut", GB, {"\x81\x30", "\x81", "\x30"}, {2, 1, 0}},
          Row{"gb_lead_then_7f", GB, {"\x81", "\x7F"}, {UINT32_MAX, 2}},
          Row{"utf8_cut_is_one_byte", UTF8, {"\xE4\xB8", "\xAD"}, {0, 0}},
          Row{"euckr_cut", EUCKR, {"\xB0", "\xA1", "\xB0\xA1\xB0"}, {1, 0, 1}}}) {
        CharsetScope cs(r.charset);
        VxEnv env;
        jlpca_ctx *c = env.ctx.get();
        jlpca_startlit(c);
        c->mb_track = 1;
        for (size_t i = 0; i < r.pieces.size(); i++) {
            ASSERT_EQ(jlpca_addlit(r.pieces[i].data(), int32_t(r.pieces[i].size()), c), 0);
            EXPECT_EQ(c->mb_pending, r.pending[i]) << r.id << " piece " << i;
        }
        c->mb_track = 0;
        c->mb_pending = 5;
        ASSERT_EQ(jlpca_addlit("x", 1, c), 0);
        EXPECT_EQ(c->mb_pending, 5u) << "measured only while tracking";
    }
}

// Escapes: the text after the backslash, in decode and keep mode; a \u
// escape in each character set (the single-byte one has no U+4E2D).
TEST(Literal, Escapes) {
    struct Row {
        const char *id;
        std::string text;
        int32_t escape_mode, compat, rc;
        std::string lit;
        int32_t charset = UTF8;
    };
    // clang-format off
    for (const Row &r : {
             Row{"decode_pairs", "n1", 0, 0, 0, "\n1"},
             Row{"decode_all", "b", 0, 0, 0, "\b"},
             Row{"decode_slash", "/x", 0, 0, 0, "/x"},
             Row{"keep_n", "nrest", 1, 0, 0, "\\nrest"},
             Row{"keep_quote", "\"", 1, 0, 0, "\\\""},
             Row{"keep_slash_unescaped", "/", 1, 0, 0, "/"},
             Row{"keep_b_standard", "b", 1, 0, 0, "\\u0008"},
             Row{"keep_b_dialect", "b", 1, 1, 0, "\\b"},
             Row{"unicode_ascii", "u0041bc", 0, 0, 0, "Abc"},
             Row{"unicode_two_byte", "u00e9", 0, 0, 0, "\xC3\xA9"},
             Row{"unicode_0080_is_a_byte", "u0080", 0, 0, 0, "\x80"},
             Row{"unicode_nul", "u0000", 0, 0, 0, std::string(1, '\0')},
             Row{"unicode_utf8", "u4e2d", 0, 0, 0, "\xE4\xB8\xAD"},
             Row{"unicode_gb", "u4e2d", 0, 0, 0, "\xD6\xD0", GB},
             Row{"unicode_euckr", "uac00", 0, 0, 0, "\xB0\xA1", EUCKR},
             Row{"unicode_single_byte", "u00e9", 0, 0, 0, "\xE9", 7},
             Row{"unicode_single_byte_lacks", "u4e2d", 0, 0, BAD, "", 7},
             Row{"keep_unicode_lf", "u000a", 1, 0, 0, "\\n"},
             Row{"keep_unicode_tab", "u0009", 1, 0, 0, "\\t"},
             Row{"keep_unicode_control", "u001f", 1, 0, 0, "\\u001F"},
             Row{"keep_unicode_0080", "u0080", 1, 0, 0, "\\u0080"},
             Row{"keep_unicode_printable", "u0041", 1, 0, 0, "A"},
             Row{"high_surrogate_alone", "ud83d", 0, 0, BAD, ""},
             Row{"low_surrogate_alone", "ude00", 0, 0, BAD, ""},
             Row{"short_unicode", "u00e", 0, 0, BAD, ""},
             Row{"bad_hex", "u00g0", 0, 0, BAD, ""},
             Row{"unknown_letter", "a", 0, 0, BAD, ""},
             Row{"below_quote", "!", 0, 0, BAD, ""},
             Row{"above_u", "v", 0, 0, BAD, ""}}) {
        // clang-format on
        CharsetScope cs(r.charset);
        VxEnv env({.compat = r.compat, .escape_mode = r.escape_mode});
        jlpca_ctx *c = env.ctx.get();
        jlpca_startlit(c);
        EXPECT_EQ(jlpca_addlit_escape(r.text.data(), int32_t(r.text.size()), c), r.rc) << r.id;
        EXPECT_EQ(std::string(c->lit_buf, size_t(c->lit_len)), r.lit) << r.id;
        EXPECT_EQ(c->lit_escaped, 1) << r.id;
    }
}

// Number helpers called directly: kind, value or text, or the rejection
// with its message.  Token boundaries (INT, BIGINT, DECIMAL) are in the
// scanner's table.
TEST(Numbers, Classification) {
    enum Helper { I, D, R };
    struct Row {
        const char *text;
        Helper helper;
        ReadSwitches sw;
        int32_t kind;
        std::string value; // tok_val for integers, tok_str for decimals
        int32_t err;
    };
    const ReadSwitches nm2{.number_mode = 2}, mysql = dialect(JLPCA_COMPAT_MYSQL);
    for (const Row &r :
         {Row{"+1", I, strict(), 0, "", BAD}, Row{"0.5", D, strict(), JT_DECIMAL, "0.5", 0},
          Row{"-0.5", D, strict(), JT_DECIMAL, "-0.5", 0}, Row{"1.", D, lax(), JT_DECIMAL, "1.", 0},
          Row{"1.", D, strict(), 0, "", BAD}, Row{".5", D, strict(), 0, "", BAD},
          Row{"-.5", D, strict(), 0, "", BAD}, Row{"0e5", R, strict(), 0, "", BAD},
          Row{"-1e400", R, mysql, 0, "", VXJSON_ERR_DOUBLE_OVERFLOW},
          Row{"1.5e400", D, nm2, 0, "", VXJSON_ERR_DOUBLE_OVERFLOW},
          Row{"2.0e0", R, nm2, JT_INT, "2", 0}, Row{"-3e9", R, nm2, JT_BIGINT, "-3000000000", 0},
          Row{"1.5e0", R, nm2, JT_DECIMAL, "1.5e0", 0}, Row{"1e19", R, nm2, JT_DECIMAL, "1e19", 0},
          Row{"2.0e0", R, lax(), JT_DECIMAL, "2.0e0", 0}}) {
        VxEnv env(r.sw);
        jlpca_ctx *c = env.ctx.get();
        c->tok = 77;
        const int32_t n = int32_t(std::strlen(r.text));
        const int32_t kind = r.helper == I   ? jlpca_ret_integer(r.text, n, c)
                             : r.helper == D ? jlpca_ret_decimal(r.text, n, c)
                                             : jlpca_ret_real(r.text, n, c);
        EXPECT_EQ(kind, r.kind) << r.text;
        EXPECT_EQ(c->err_code, r.err) << r.text;
        if (r.err) {
            EXPECT_EQ(c->tok, 0u);
            EXPECT_STREQ(c->err_msg, r.err == BAD ? "invalid json number" : "number overflow");
        } else if (kind == JT_DECIMAL) {
            EXPECT_EQ(std::string(c->tok_str, size_t(c->tok_val)), r.value) << r.text;
            EXPECT_EQ(c->tok_str[c->tok_val], '\0');
            EXPECT_EQ(c->tok, uint32_t(JT_DECIMAL));
        } else {
            EXPECT_EQ(std::to_string(c->tok_val), r.value) << r.text;
            EXPECT_EQ(c->tok, uint32_t(kind));
        }
    }
}

TEST(Numbers, PrefixCopies) {
    VxEnv env(lax());
    jlpca_ctx *c = env.ctx.get();
    const char *out = nullptr;
    int32_t len = 0;
    const char *plus = "+12";
    ASSERT_EQ(jlpca_number_prefix(plus, 3, c, &out, &len), 1);
    EXPECT_EQ(out, plus + 1) << "a slice of the token";
    EXPECT_EQ(len, 2);
    const char *neg = "-012";
    ASSERT_EQ(jlpca_number_prefix(neg, 4, c, &out, &len), 1);
    EXPECT_NE(out, neg) << "a heap copy";
    EXPECT_EQ(std::string(out, size_t(len)), "-12");
    double d = 0;
    EXPECT_EQ(jlpca_check_decimal_overflow("1e308", 5, c, &d), JT_DECIMAL);
    EXPECT_EQ(d, 1e308);
    EXPECT_EQ(jlpca_check_decimal_overflow("1e309", 5, c, &d), 0);
    EXPECT_EQ(c->err_code, 0) << "tolerated in the standard dialect";
}

// The exported lookup: a keyword's token, or -1 for another word (a name
// when lax), -2 for any word a strict reader refuses.
TEST(Keywords, Lookup) {
    struct Row {
        const char *word;
        int32_t lax, strict;
    };
    for (const Row &r : {Row{"true", JT_TRUE, JT_TRUE}, Row{"false", JT_FALSE, JT_FALSE},
                         Row{"null", JT_NULL, JT_NULL}, Row{"TRUE", JT_TRUE, -2},
                         Row{"FaLsE", JT_FALSE, -2}, Row{"Null", JT_NULL, -2}, Row{"nul", -1, -2},
                         Row{"nulls", -1, -2}, Row{"", -1, -2}, Row{"truefalse", -1, -2}}) {
        VxEnv l(lax()), s(strict());
        EXPECT_EQ(jkeyword_lookup(r.word, l.ctx.get()), r.lax) << r.word;
        EXPECT_EQ(jkeyword_lookup(r.word, s.ctx.get()), r.strict) << r.word;
    }
}

} // namespace
