;; -*- lexical-binding: t; -*-
;; What Emacs does with a text without a server: indent, layout, index, the list of errors. The tool is $NTL_TOOL.
(require 'ntl-mode)
(require 'compile)
(require 'imenu)
(setq ntl-command (getenv "NTL_TOOL") make-backup-files nil)
(defvar folder (file-name-as-directory (make-temp-file "ntl" t)))
(defvar source (getenv "NTL_SOURCE_DIR"))

(defun expect (what got wanted)
  (unless (equal got wanted)
    (message "%s: %S\n  but not %S" what got wanted)
    (kill-emacs 1)))

(defun open-file (name text)
  (write-region text nil (concat folder name))
  (find-file (concat folder name))
  (expect "mode" major-mode 'ntl-mode))

;; The shipped texts are laid out by `ntl format'; their indent comes back when it is lost.
(dolist (file (directory-files-recursively (concat source "/data") "\\.btl\\'"))
  (unless (string-match-p "bad_names" file)
    (with-temp-buffer
      (insert-file-contents file)
      (let ((neat (buffer-string)))
        (goto-char (point-min))
        (while (re-search-forward "^ +" nil t) (replace-match ""))
        (ntl-mode)
        (let ((inhibit-message t)) (indent-region (point-min) (point-max)))
        (expect (concat "indent of " file) (buffer-string) neat)))))

;; A brace on a line of its own, and brackets that do not match.
(with-temp-buffer
  (let ((text "library \"l\"\n{\n  block \"B\"\n  {\n    pin \"A\"\n        input;\n  }\n}\n}\n)\n"))
    (insert (replace-regexp-in-string "^ +" "" text))
    (ntl-mode)
    (let ((inhibit-message t)) (indent-region (point-min) (point-max)))
    (expect "indent of odd braces" (buffer-string) text)))

(open-file "format.btl" "library \"l\" {\nblock \"B\" { pin  \"A\" input; }\nfunction int f();}")
(expect "index" (mapcar #'car (cdr (imenu--make-index-alist))) '("Functions" "B"))
(ntl-format-buffer)
(expect "layout" (buffer-string) "library \"l\" {\n  block \"B\" {\n    pin \"A\" input;\n  }\n  function int f();\n}\n")
(insert "\"")
(expect "refused" (condition-case fault (ntl-format-buffer) (user-error (and (string-match-p "string that does not end" (cadr fault)) 'yes))) 'yes)
(set-buffer-modified-p nil)

(open-file "faulty.btl" "library \"l\" {\n  block \"B\" {\n    pin \"A\" inpt;\n  }\n  block \"C\" { }\n}\n")
(let ((errors (compilation-start compile-command)))
  (while (get-buffer-process errors) (accept-process-output nil 0.1))
  (with-current-buffer errors
    (goto-char (point-min))
    (compilation-next-error 1)
    (expect "first error" (thing-at-point 'filename) "faulty.btl:3:13:")
    (expect "how many" (list compilation-num-errors-found compilation-num-warnings-found) '(1 1))))
(delete-directory folder t)
