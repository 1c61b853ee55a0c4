;;; ntl-mode.el --- Edit NTL cell libraries  -*- lexical-binding: t; -*-

;; Package-Requires: ((emacs "28.1"))
;; Version: 0.3.0
;; Keywords: languages

;;; Commentary:

;; Colours, indentation and an index of NTL, the language of cell
;; libraries, and the start of its language server with Eglot:
;;
;;   (add-to-list 'load-path ".../share/hdnt/editors/emacs")
;;   (require 'ntl-mode)
;;   (add-hook 'ntl-mode-hook #'eglot-ensure)

;;; Code:

(require 'prog-mode)
(require 'subr-x)

(defvar compile-command)
(defvar eglot-server-programs)

(defgroup ntl nil
  "NTL cell libraries."
  :group 'languages)

(defcustom ntl-command "ntl"
  "The tool that checks, lays out and serves NTL."
  :type 'string)

(defcustom ntl-indent-offset 2
  "Columns of a level; `ntl format' has two."
  :type 'integer
  :safe #'integerp)

(defface ntl-number '((t :inherit font-lock-constant-face))
  "Face of numbers.")

(defface ntl-open-string '((t :inherit font-lock-warning-face))
  "Face of strings that do not end in their line.")

;;; Colours

(defconst ntl-keywords
  '((font-lock-keyword-face
     "library" "block" "pin" "property" "function" "pinlist" "end" "mapsto"
     "expandsto" "retargetsto" "modifiedby" "inst" "connect" "assign" "signal"
     "if" "else")
    (font-lock-type-face "int" "double" "bool" "string")
    (font-lock-constant-face "true" "false" "NULL")
    (font-lock-builtin-face
     "input" "output" "bidir" "internal" "data" "clock" "clear" "enable"
     "mixed" "preset" "reset" "set" "setreset" "writeEnable" "tieLow" "tieHigh"
     "tieSpecial" "untie" "active" "mustConnect" "test" "abstract" "early"
     "beta" "production" "deprecated")
    (font-lock-variable-name-face
     "primgroup" "maturityLevel" "values" "min" "max" "default" "precision"
     "units" "description" "simulation" "constraintsOnly" "muxControl"))
  "The keywords of each face.")

(defconst ntl--faces
  (let ((faces (make-hash-table :test #'equal)))
    (pcase-dolist (`(,face . ,words) ntl-keywords faces)
      (dolist (word words) (puthash word face faces)))))

(defconst ntl--vector
  "[0-9]+'\\(?:h[0-9A-Fa-f]*\\|b[01]*\\)")

(defconst ntl--word "[A-Za-z_][A-Za-z0-9_]*")

;; All tokens in one expression: where one ends the next may begin, so that
;; a keyword is none within another word, but is one right behind a number.
(defconst ntl--font-lock-keywords
  `((,(concat "\\(" ntl--vector "\\|-?[0-9]+\\(?:\\.[0-9]*\\)?\\)\\|" ntl--word)
     (0 (if (match-beginning 1)
            'ntl-number
          (gethash (match-string-no-properties 0) ntl--faces
                   'font-lock-function-name-face))))))

(defvar ntl-mode-syntax-table
  (let ((table (make-syntax-table)))
    (modify-syntax-entry ?/ ". 124b" table)
    (modify-syntax-entry ?* ". 23" table)
    (modify-syntax-entry ?\n "> b" table)
    (modify-syntax-entry ?_ "w" table)
    (dolist (char '(?\\ ?' ?\[ ?\] ?$ ?% ?& ?+ ?- ?< ?= ?> ?|))
      (modify-syntax-entry char "." table))
    table))

(defun ntl--mark (from to syntax)
  "Make the characters at FROM and TO the fences of SYNTAX, \"|\" or \"!\"."
  (dolist (place (list from to))
    (when (< place (point-max))
      (put-text-property place (1+ place) 'syntax-table
                         (string-to-syntax syntax)))))

(defun ntl--pass (begin)
  "Go to the end of what was found at BEGIN, and mark what ends with its line."
  (cond
   ((eq (char-after begin) ?\")
    (unless (looking-at "[^\"\n]*\"")
      (end-of-line)
      (ntl--mark begin (point) "|"))
    (when (< (point) (match-end 0)) (goto-char (match-end 0))))
   ((looking-back "//" begin) (end-of-line))
   ((looking-back "/\\*" begin) (search-forward "*/" nil 'move))
   ((eq (char-after begin) ?#)
    (end-of-line)
    (ntl--mark begin (point) "!"))
   ((member (buffer-substring-no-properties begin (point)) '("INCLUDE" "INLINE"))
    (re-search-forward ";.*" nil 'move)
    (ntl--mark begin (point) "!"))))

(defun ntl--propertize (start end)
  "Mark from START to END what the syntax table does not know.
These are strings that do not end in their line, and, as a kind of comments,
the lines of architectures and the statements that put files in."
  (goto-char (or (nth 8 (syntax-ppss start)) start))
  (let ((case-fold-search nil)
        (found (concat "\"\\|/[/*]\\|^#\\(?:ifArch\\|endif\\)\\|" ntl--vector
                       "\\|" ntl--word)))
    (while (and (< (point) end) (re-search-forward found end t))
      (ntl--pass (match-beginning 0)))))

(defun ntl--syntactic-face (state)
  "The face of the string or comment of STATE."
  (cond
   ((eq (nth 3 state) t) 'ntl-open-string)
   ((nth 3 state) 'font-lock-string-face)
   ((eq (char-after (nth 8 state)) ?/) 'font-lock-comment-face)
   (t 'font-lock-preprocessor-face)))

;;; Indentation

(defun ntl--code-before ()
  "Go behind the last code before the beginning of the line.
Return nil when there is none."
  (beginning-of-line)
  (forward-comment (- (point)))
  (not (bobp)))

(defun ntl--bracket ()
  "Go to the open bracket around point; return nil when there is none."
  (when-let ((bracket (nth 1 (syntax-ppss))))
    (goto-char bracket)))

(defun ntl--ends-here ()
  "Tell whether what follows point begins anew.
This is `head' behind an else or the condition of an if, `option' between
options and between values, and the character behind one that ends a
statement or begins a list of them.  Go back over parentheses."
  (let ((last (char-before)))
    (cond
     ((eq last ?\))
      (backward-char)
      (and (ntl--bracket) (looking-back "\\_<if[ \t]*" (line-beginning-position))
           'head))
     ((eq last ?,)
      (save-excursion
        (and (ntl--bracket)
             (looking-back "\\_<\\(?:property\\|values\\)\\_>[^{};\n]*"
                           (line-beginning-position))
             (eq (char-after) ?{)
             'option)))
     ((looking-back "\\_<else" (line-beginning-position)) 'head)
     ((memq last '(?\; ?{ ?})) last))))

(defun ntl--to-line-before ()
  "Go from the line to what its statement began with, or to code before it.
Return as `ntl--ends-here' what is before, and t when there is nothing."
  (back-to-indentation)
  (if (eq (char-after) ?})
      (not (ntl--bracket))
    (or (not (ntl--code-before)) (ntl--ends-here))))

(defun ntl--begin-of-statement (outermost)
  "Go to the line that the statement around point begins in.
With OUTERMOST, of the if that it is the body of.  Return its indentation."
  (let ((line (line-beginning-position)))
    (while (memq (ntl--to-line-before) (if outermost '(nil head) '(nil)))
      (setq line (line-beginning-position)))
    (goto-char line)
    (current-indentation)))

(defun ntl--matching-if ()
  "Go to the if of the else at point; return nil when there is none."
  (let ((open 1))
    (while (and (> open 0)
                (re-search-backward "\\_<\\(?:if\\|\\(else\\)\\)\\_>" nil t))
      (unless (nth 8 (syntax-ppss))
        (setq open (+ open (if (match-beginning 1) 1 -1)))))
    (= open 0)))

(defun ntl--indentation ()
  "The indentation that `ntl format' gives the line; nil when it stays."
  (beginning-of-line)
  (let* ((case-fold-search nil)
         (state (syntax-ppss))
         (comment (and (nth 4 state) (nth 8 state))))
    (cond
     (comment
      (when (and (looking-at "[ \t]*\\*") (eq (char-after comment) ?/))
        (goto-char comment)
        (1+ (current-column))))
     ((looking-at "#\\(?:ifArch\\|endif\\)") 0)
     ((looking-at "[ \t]*}") (ntl--begin-of-statement nil))
     ((and (looking-at "[ \t]*else\\_>") (save-excursion (ntl--matching-if)))
      (ntl--matching-if)
      (ntl--begin-of-statement nil))
     (t (ntl--indentation-behind (looking-at "[ \t]*{"))))))

(defun ntl--indentation-behind (brace)
  "The indentation by the code before the line; BRACE when it begins with one."
  (if (not (ntl--code-before))
      0
    (let* ((before (point))
           (end (ntl--ends-here)))
      (unless (eq end 'head) (goto-char before))
      (pcase end
        ('head (+ (ntl--begin-of-statement nil) (if brace 0 ntl-indent-offset)))
        (?{ (+ (ntl--begin-of-statement nil) ntl-indent-offset))
        ('nil (+ (ntl--begin-of-statement nil)
                 (if brace 0 (* 2 ntl-indent-offset))))
        (_ (ntl--begin-of-statement t))))))

(defun ntl-indent-line ()
  "Indent the line as `ntl format' does."
  (interactive)
  (let ((indentation (save-excursion (ntl--indentation))))
    (cond
     ((not indentation) 'noindent)
     ((<= (current-column) (current-indentation))
      (indent-line-to indentation))
     (t (save-excursion (indent-line-to indentation))))))

;;; The tool

(defun ntl-format-buffer ()
  "Lay the text out with `ntl format'; what it refuses stays as it is."
  (interactive)
  (let ((output (generate-new-buffer " *ntl format*"))
        (said (make-temp-file "ntl")))
    (unwind-protect
        (if (eq 0 (call-process-region nil nil ntl-command nil
                                       (list output said) nil "format" "-"))
            (replace-buffer-contents output)
          (user-error "%s" (with-temp-buffer
                             (insert-file-contents said)
                             (string-trim (buffer-string)))))
      (kill-buffer output)
      (delete-file said))))

;;;###autoload
(define-derived-mode ntl-mode prog-mode "NTL"
  "Major mode for NTL cell libraries."
  (setq-local comment-start "// ")
  (setq-local comment-end "")
  (setq-local comment-start-skip "\\(?://+\\|/\\*+\\)[ \t]*")
  (setq-local parse-sexp-ignore-comments t)
  (setq-local syntax-propertize-function #'ntl--propertize)
  (setq-local font-lock-defaults
              '(ntl--font-lock-keywords
                nil nil nil
                (font-lock-syntactic-face-function . ntl--syntactic-face)))
  (setq-local indent-line-function #'ntl-indent-line)
  (setq-local indent-tabs-mode nil)
  (setq-local electric-indent-chars (append "{}\n" electric-indent-chars))
  (setq-local imenu-generic-expression
              '((nil "^[ \t]*block[ \t]+\"\\([^\"\n]+\\)\"" 1)
                ("Functions" "^[ \t]*function[^(\n]*?\\([A-Za-z_0-9]+\\)[ \t]*(" 1)))
  (when buffer-file-name
    (setq-local compile-command
                (concat (shell-quote-argument ntl-command)
                        " check --format short "
                        (shell-quote-argument
                         (file-name-nondirectory buffer-file-name))))))

;;;###autoload
(add-to-list 'auto-mode-alist '("\\.btl\\'" . ntl-mode))

(with-eval-after-load 'eglot
  (add-to-list 'eglot-server-programs
               `(ntl-mode . ,(lambda (&rest _) (list ntl-command "serve")))))

(provide 'ntl-mode)
;;; ntl-mode.el ends here
